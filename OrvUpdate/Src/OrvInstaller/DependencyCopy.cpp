#include "DependencyCopy.h"

#include <set>
#include <vector>

#include "ModuleTree.h"
#include "PeImports.h"
#include "Public/Base/File.h"
#include "Public/Base/StringEx.h"
#include "Public/Base/System.h"

namespace Tarnwick::OrvUpdate {

using namespace Public::Base;

namespace {

/// The text behind the last backslash.
std::string fileName(const std::string& path) { return path.substr(path.rfind('\\') + 1); }

/// Finds what a program needs. Each module is read once, however many import it, and only one is mapped at a time.
class DependencyWalk {
public:
    explicit DependencyWalk(const std::string& sourceDir) : mTree(scanModules(sourceDir)) {}

    bool walk(const Module& program, std::list<Module>& found) {
        std::vector<Step> steps;
        if (readImports(program, steps) != ReadResult::Program) return false;
        const std::string programName = StringEx::toLower(program.name);
        std::set<std::string> seen;
        while (!steps.empty()) {
            Step step = std::move(steps.back());
            steps.pop_back();
            const std::string lowerName = StringEx::toLower(step.module.name);
            if (step.importsDone) {
                // The program itself comes last and would overwrite a copy under its own name.
                if (lowerName != programName) found.push_back(std::move(step.module));
                continue;
            }
            if (!seen.insert(lowerName).second) continue;
            const size_t place = steps.size();
            steps.push_back({step.module, true});
            if (readImports(step.module, steps) == ReadResult::Absent) steps.resize(place);
        }
        found.push_back(program);
        return true;
    }

private:
    /// A module on the way: first its imports are looked at, then, when all of them are done, it is its turn itself.
    struct Step {
        Module module;
        bool importsDone = false;
    };
    enum class ReadResult { Absent, Unreadable, Program };

    /// Adds the imported modules that the tree holds, the first one last, so that it is taken first.
    ReadResult readImports(const Module& module, std::vector<Step>& steps) const {
        MappedFile file;
        const MappedFile::Result result = file.open(module.path);
        if (result == MappedFile::Result::CannotOpen) return ReadResult::Absent;
        if (result != MappedFile::Result::Mapped) return ReadResult::Unreadable;
        const PeImports imports({file.data(), file.size()});
        if (!imports.isProgram()) return ReadResult::Unreadable;

        const std::string ownName = StringEx::toLower(module.name);
        std::vector<Step> wanted;
        std::set<std::string> names;
        imports.forEach([&](std::string_view text) {
            const std::string imported = System::fromCodePage(std::string(text));
            if (imported == ownName) return;
            const std::string name = fileName(imported);
            const auto place = mTree.find(StringEx::toLower(name));
            if (place == mTree.end() || !names.insert(place->first).second) return;
            wanted.push_back({{place->second.directory + "\\" + place->second.fileName, name}, false});
        });
        steps.insert(steps.end(), std::make_move_iterator(wanted.rbegin()), std::make_move_iterator(wanted.rend()));
        return ReadResult::Program;
    }

    const std::map<std::string, ModulePlace> mTree;
};

/// The path with another extension; empty for a file without one.
std::string withExtension(const std::string& path, const std::string& extension) {
    const size_t point = path.rfind('.');
    if (point == std::string::npos || path.find('\\', point) != std::string::npos) return {};
    return path.substr(0, point) + extension;
}

}  // namespace

bool findDependencies(const std::string& file, const std::string& sourceDir, std::list<Module>& modules) {
    return DependencyWalk(sourceDir).walk({file, fileName(file)}, modules);
}

void copyModules(const std::list<Module>& modules, const std::string& targetDir, bool withSymbols) {
    for (const Module& module : modules) {
        const std::string target = targetDir + "\\" + module.name;
        System::copyFile(module.path, target);
        if (!withSymbols) continue;
        const std::string symbols = withExtension(module.path, ".pdb");
        if (!symbols.empty()) System::copyFile(symbols, withExtension(target, ".pdb"));
    }
}

bool copyDependens(const std::string& file, const std::string& sourceDir, const std::string& targetDir) {
    if (file.empty() || sourceDir.empty() || targetDir.empty()) return false;
    const std::string program = StringEx::replace(file, "/", "\\");
    if (!File::access(program, AccessMode_Exists)) return false;
    std::list<Module> modules;
    if (!findDependencies(program, StringEx::replace(sourceDir, "/", "\\"), modules)) return false;
    copyModules(modules, StringEx::replace(targetDir, "/", "\\"), false);
    return true;
}

}  // namespace Tarnwick::OrvUpdate
