// Reads installer packages.
#pragma once

#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "Archive/IExtractOutFile.h"
#include "Public/Base/PlatformExport.h"

/// Reads a self-extracting package of NSIS 2 or 3: ANSI or Unicode, deflate, bzip2 or LZMA, solid or not. The file is
/// mapped; no length, offset or count in it is trusted. Item names are relative to the install directory and use
/// backslashes ("Orv Client\\app.exe"); an item that goes elsewhere keeps its variable in front ("$PLUGINSDIR\\x.dll").
/// Items come in the order of their data in the package. Two objects may read one file at the same time. close() may be
/// called from another thread while extract runs, which then ends with false; all else belongs to one thread at a time.
///
/// Limits, so that a hostile file can ask for no more than its size warrants. An item unpacks to 128 MiB or to 64 times
/// what it is packed to, whichever is more, since the sink gets it as a whole; all items together to 256 MiB or to 64
/// times the file; what the sink is given, with items that bear many names, to 1 GiB or to 64 times the file. A window
/// for LZMA takes 64 MiB or 16 times the stream, the header 32 MiB, and 200,000 names 16 MiB. Real files pack to a
/// tenth at best, a bomb to a thousandth. Packages of up to 2 MiB are thus refused or read in seconds and within 256
/// MiB. A real package takes its largest item, 32 MiB for what is read ahead, and one LZMA window for each of up to
/// four threads; with a dictionary beyond 8 MiB there are fewer threads, beyond 16 MiB one.
class ORV_PLATFORM_API NSISDecompile {
public:
    NSISDecompile();
    /// Closes.
    virtual ~NSISDecompile();
    NSISDecompile(const NSISDecompile&) = delete;
    NSISDecompile& operator=(const NSISDecompile&) = delete;

    /// Finds and decodes the package's header; cheap, the items are not touched. An open package is closed first.
    /// @param password always empty   @return false when the file is not a readable package
    virtual bool open(const std::string& path, const std::string& password);
    /// ProductName of the version resource. @return false when there is none
    virtual bool getName(std::string& name);
    /// Comments of the version resource. @return false when there is none
    virtual bool getComment(std::string& comment);
    /// The ProductVersion text of the version resource, else FileVersion, else the fixed file version. @return false
    /// when the package has no version resource
    virtual bool getVersion(std::string& version);
    /// Where the package's first header says that its data ends: the length of an unaltered, unsigned file, in bytes.
    virtual bool getSize(uint64_t& size);
    /// Paths of all items, in the order of extract. @return false when no package is open
    virtual bool getItems(std::list<std::string>& items);
    /// Drives the sink through all items on this thread. Checks the package's checksum where it has one.
    /// @return false when no package is open, the sink's open gave false, close() came in between, or the data is bad;
    ///         for the last two the sink's setError has been called
    virtual bool extract(const std::shared_ptr<IExtractOutFile>& sink);
    /// Releases the file.
    virtual void close();

private:
    struct State;
    std::unique_ptr<State> mState;
};
