#pragma once

#include <array>
#include <string_view>

// The tables of the project scan.
namespace loftmere::ProjectArtifacts {

struct Kind {
    std::string_view folder;
    std::string_view marker; // a name beside the folder, or within it, that proves the project
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
// clang-format on

// Folders that hold no projects of the user's own.
inline constexpr std::array<std::string_view, 12> neverDescend{
    ".git",   "Library", ".Trash", "Applications", "Pictures", "Music",
    "Movies", ".cache",  ".npm",   ".cargo",       ".rustup",  "vendor",
};

// Where people keep their code, below the home folder.
inline constexpr std::array<std::string_view, 21> usualRoots{
    "Developer",
    "Projects",
    "projects",
    "Code",
    "code",
    "src",
    "dev",
    "Dev",
    "repos",
    "Repos",
    "git",
    "GitHub",
    "github",
    "Sites",
    "workspace",
    "Workspace",
    "Documents/GitHub",
    "Documents/Projects",
    "Documents/Code",
    "Documents/Developer",
    "Desktop",
};

} // namespace loftmere::ProjectArtifacts
