#include "Decoder.h"

namespace Archive {
namespace {

/// Properties 3/0/2, a dictionary of whole 64 KiB, and the range coder's first byte, which is always 0.
bool looksLikeLzma(ByteView stream) {
    return stream.size() > 5 && stream[0] == 0x5D && stream[1] == 0 && stream[2] == 0 && stream[5] == 0;
}

bool looksLikeBzip2(ByteView stream) { return stream.size() > 1 && stream[0] == 0x31 && stream[1] < 0x0E; }

}  // namespace

std::unique_ptr<Decoder> makeDecoder(Method method) {
    switch (method) {
        case Method::Lzma:
            return makeLzma(false);
        case Method::LzmaFiltered:
            return makeLzma(true);
        case Method::Bzip2:
            return makeBzip2();
        case Method::Deflate:
            return makeInflate(false);
        case Method::DeflateBare:
            break;
    }
    return makeInflate(true);
}

std::vector<Method> candidateMethods(ByteView stream) {
    std::vector<Method> methods;
    if (looksLikeLzma(stream)) methods.push_back(Method::Lzma);
    if (stream.size() > 1 && stream[0] <= 1 && looksLikeLzma(stream.subspan(1))) {
        methods.push_back(Method::LzmaFiltered);
    }
    if (looksLikeBzip2(stream)) methods.push_back(Method::Bzip2);
    methods.push_back(Method::Deflate);
    methods.push_back(Method::DeflateBare);
    return methods;
}

Decoder& Decoders::get(Method method) {
    auto& decoder = mDecoders[static_cast<size_t>(method)];
    if (!decoder) decoder = makeDecoder(method);
    return *decoder;
}

}  // namespace Archive
