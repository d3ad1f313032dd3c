// A path of a package with its variables.
#pragma once

#include <string>

namespace Archive {

/// Text whose beginning is told apart: a variable's name in it could also be plain text.
struct PathText {
    enum Root {
        Relative,    ///< plain text
        InstallDir,  ///< the text follows the install directory
        Elsewhere,   ///< another variable or folder in front, a drive or a share
    };
    Root root = Relative;
    std::string text;

    /// With the install directory's variable in front where it belongs.
    std::string spelled() const { return root == InstallDir ? "$INSTDIR" + text : text; }
};

}  // namespace Archive
