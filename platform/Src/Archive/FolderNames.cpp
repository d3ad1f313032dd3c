#include "FolderNames.h"

#include <iterator>

namespace Archive {
namespace {

/// From number 20 on.
const char* const kVariables[] = {"CMDLINE",    "INSTDIR", "OUTDIR",  "EXEDIR",     "LANGUAGE", "TEMP",
                                  "PLUGINSDIR", "EXEPATH", "EXEFILE", "HWNDPARENT", "_CLICK",   "_OUTDIR"};

struct ShellFolder {
    uint32_t number;
    const char* name;
};
const ShellFolder kShellFolders[] = {
    {0x00, "DESKTOP"},
    {0x02, "SMPROGRAMS"},
    {0x05, "DOCUMENTS"},
    {0x06, "FAVORITES"},
    {0x07, "SMSTARTUP"},
    {0x08, "RECENT"},
    {0x09, "SENDTO"},
    {0x0B, "STARTMENU"},
    {0x0D, "MUSIC"},
    {0x0E, "VIDEOS"},
    {0x10, "DESKTOP"},
    {0x13, "NETHOOD"},
    {0x14, "FONTS"},
    {0x15, "TEMPLATES"},
    {0x16, "STARTMENU"},
    {0x17, "SMPROGRAMS"},
    {0x18, "SMSTARTUP"},
    {0x19, "DESKTOP"},
    {0x1A, "APPDATA"},
    {0x1B, "PRINTHOOD"},
    {0x1C, "LOCALAPPDATA"},
    {0x1F, "FAVORITES"},
    {0x20, "INTERNET_CACHE"},
    {0x21, "COOKIES"},
    {0x22, "HISTORY"},
    {0x23, "APPDATA"},
    {0x24, "WINDIR"},
    {0x25, "SYSDIR"},
    {0x26, "PROGRAMFILES"},
    {0x27, "PICTURES"},
    {0x28, "PROFILE"},
    {0x2A, "PROGRAMFILES32"},
    {0x2B, "COMMONFILES"},
    {0x2C, "COMMONFILES32"},
    {0x2D, "TEMPLATES"},
    {0x2E, "DOCUMENTS"},
    {0x2F, "ADMINTOOLS"},
    {0x30, "ADMINTOOLS"},
    {0x35, "MUSIC"},
    {0x36, "PICTURES"},
    {0x37, "VIDEOS"},
    {0x38, "RESOURCES"},
    {0x39, "RESOURCES_LOCALIZED"},
    {0x3B, "CDBURN_AREA"},
};

}  // namespace

std::string variableName(uint32_t number) {
    if (number < 10) return std::string("$") + std::to_string(number);
    if (number < 20) return "$R" + std::to_string(number - 10);
    if (number < 20 + std::size(kVariables)) return std::string("$") + kVariables[number - 20];
    return "$_" + std::to_string(number) + "_";
}

std::string shellFolderName(uint32_t number) {
    for (const ShellFolder& folder : kShellFolders) {
        if (folder.number == number) return std::string("$") + folder.name;
    }
    return "$_SHELL_" + std::to_string(number) + "_";
}

}  // namespace Archive
