#pragma once

#include "CleanerCore/Scanning/JunkScanner.h"

#include <array>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

// What the project scan looks for, and where. The scanner itself is in ProjectArtifactsScanner.cpp.
namespace loftmere::ProjectArtifacts {

struct Kind {
    std::string_view folder;
    std::string_view marker; // a name next to the folder, or inside it, that proves the project
    bool insideArtifact;
    std::string_view restore; // what brings the folder back
};

// Searched from the top.
// clang-format off
inline constexpr std::array kinds{
    Kind{"node_modules",  "package.json",        false, "npm/yarn/pnpm install"},
    Kind{".next",         "package.json",        false, "next build"},
    Kind{".nuxt",         "package.json",        false, "nuxt build"},
    Kind{".turbo",        "package.json",        false, "rebuilt automatically"},
    Kind{".parcel-cache", "package.json",        false, "rebuilt automatically"},
    Kind{".svelte-kit",   "package.json",        false, "rebuilt automatically"},
    Kind{"target",        "Cargo.toml",          false, "cargo build"},
    Kind{".build",        "Package.swift",       false, "swift build"},
    Kind{"Pods",          "Podfile",             false, "pod install"},
    Kind{".gradle",       "settings.gradle",     false, "gradle build"},
    Kind{".gradle",       "settings.gradle.kts", false, "gradle build"},
    Kind{".venv",         "pyvenv.cfg",          true,  "python -m venv + pip install"},
    Kind{"venv",          "pyvenv.cfg",          true,  "python -m venv + pip install"},
    Kind{".tox",          "tox.ini",             false, "tox"},
};

// Folders that hold no projects of the user's own.
inline constexpr std::array<std::string_view, 12> neverDescend{
    ".git", "Library", ".Trash", "Applications", "Pictures", "Music",
    "Movies", ".cache", ".npm", ".cargo", ".rustup", "vendor",
};

// Where people keep their code, below the home folder.
inline constexpr std::array<std::string_view, 21> usualRoots{
    "Developer", "Projects", "projects", "Code", "code", "src", "dev", "Dev", "repos", "Repos", "git",
    "GitHub", "github", "Sites", "workspace", "Workspace",
    "Documents/GitHub", "Documents/Projects", "Documents/Code", "Documents/Developer", "Desktop",
};
// clang-format on

using Names = std::set<std::string_view>;

// The real folders to walk: the user's own choice, else the usual places for code. A folder that two paths
// lead to is listed once.
std::vector<std::string> roots(const ScanContext& context);

// When a project was last worked on: the newest modification date of its children, of up to 200 entries in
// each folder among them, and of the files in which git records its work. Children with a name in `excluding`
// do not count. Absent when no date can be read. `cancel` is asked at every 2000th entry. When it answers
// true, the newest date so far is the result.
std::optional<Date> projectActivity(const std::string& folder, const Names& excluding,
                                    const std::function<bool()>& cancel = nullptr);

} // namespace loftmere::ProjectArtifacts
