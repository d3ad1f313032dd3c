// The package's compression methods behind one face.
#pragma once

#include <memory>
#include <vector>

#include "Bytes.h"

namespace Archive {

/// Decompresses one stream after another from memory. Holds its tables and windows between streams, since a package has
/// thousands of short ones. One thread at a time.
class Decoder {
public:
    virtual ~Decoder() = default;
    /// Begins a stream. The input stays the caller's.
    /// @param outputLimit more than this is never asked for; lets the decoder keep a smaller window
    /// @return false when the stream cannot be of this method, or asks for too much memory
    virtual bool begin(ByteView input, uint64_t outputLimit) = 0;
    /// Decompresses until the output is full. @return bytes written; fewer than size at the stream's end or on bad data
    virtual size_t read(unsigned char* output, size_t size) = 0;
    /// The input's next byte: those before it are done with.
    virtual const unsigned char* position() const = 0;
    /// True once bad data was met; what was read up to then is worth nothing.
    bool failed() const { return mFailed; }
    /// True once the stream's own end was met.
    bool ended() const { return mEnded; }

protected:
    bool mFailed = false;
    bool mEnded = false;
};

enum class Method {
    Lzma,
    LzmaFiltered,  ///< a byte in front tells whether machine code was filtered; made by other builds of the compiler
    Bzip2,
    Deflate,      ///< stored blocks with or without the complement of their length, as the first one shows
    DeflateBare,  ///< stored blocks without the complement
};

std::unique_ptr<Decoder> makeDecoder(Method method);

/// What a stream could be by its first bytes, the likeliest first. No stream tells its method: each of these is only a
/// guess until it decodes.
std::vector<Method> candidateMethods(ByteView stream);

std::unique_ptr<Decoder> makeLzma(bool filterByte);
std::unique_ptr<Decoder> makeBzip2();
std::unique_ptr<Decoder> makeInflate(bool bareStoredBlocks);

/// One decoder a method, made when first wanted.
class Decoders {
public:
    Decoder& get(Method method);

private:
    std::unique_ptr<Decoder> mDecoders[5];
};

}  // namespace Archive
