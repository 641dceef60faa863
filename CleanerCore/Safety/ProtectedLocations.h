#pragma once

#include <array>
#include <string_view>

// The locations that decide what may be removed. The order decides nothing.
namespace loftmere::ProtectedLocations {

// Folders of the user's data, relative to the home folder; the empty one is the home folder itself. They may
// be emptied, never removed.
inline constexpr auto homeContainers = std::to_array<std::string_view>({
    "",
    "Library",
    "Library/Caches",
    "Library/Logs",
    "Library/Application Support",
    "Library/Containers",
    "Library/Group Containers",
    "Library/Preferences",
    "Library/Developer",
    "Library/Developer/Xcode",
    "Desktop",
    "Documents",
    "Downloads",
    "Library/Mobile Documents",
    "Library/Mobile Documents/com~apple~CloudDocs",
    "Library/CloudStorage",
    "Pictures",
    "Movies",
    "Music",
    "Public",
    "Applications",
    ".Trash",
});

// The same, absolute.
inline constexpr auto systemContainers = std::to_array<std::string_view>({
    "/",
    "/Applications",
    "/Library",
    "/Users",
    "/private",
    "/tmp",
    "/opt",
});

// Personal data and the program's own state, relative to the home folder. A folder that holds one of them is
// refused too: so "Backup/.lock", which need not exist, keeps the folder "Backup" while each backup in it may
// go, and the entries for single files keep "Library/Cookies" and ".docker".
inline constexpr auto homeBlocked = std::to_array<std::string_view>({
    "Library/Keychains",
    "Library/Messages",
    "Library/Mail",
    "Library/Calendars",
    "Library/Application Support/AddressBook",
    "Library/Application Support/CallHistoryDB",
    "Library/Application Support/MobileSync/Backup/.lock",
    "Library/Safari",
    "Library/Accounts",
    "Library/Cookies/Cookies.binarycookies",
    "Library/Group Containers/group.com.apple.notes",
    "Library/Containers/com.apple.Notes",
    "Library/Photos",
    "Library/Autosave Information",
    "Library/Application Support/Ostrel Loftmere",
    "Library/LaunchAgents/com.ostrel.loftmere.agent.plist",
    ".ssh",
    ".gnupg",
    ".aws",
    ".kube",
    ".config/gcloud",
    ".docker/config.json",
    ".zshrc",
    ".bashrc",
    ".gitconfig",
});

// What belongs to the operating system.
inline constexpr auto systemBlocked = std::to_array<std::string_view>({
    "/System",
    "/bin",
    "/sbin",
    "/usr",
    "/etc",
    "/var",
    "/private/etc",
    "/private/var/db",
    "/private/var/vm",
    "/Library/Apple",
    "/Library/Keychains",
    "/Library/Security",
    "/cores",
    "/dev",
    "/Volumes",
    "/Network",
    "/opt/homebrew/bin",
});

// The only places outside the home folder in which anything may be removed.
inline constexpr auto adminRoots = std::to_array<std::string_view>({
    "/Applications",
    "/Library/Application Support",
    "/Library/Caches",
    "/Library/LaunchAgents",
    "/Library/LaunchDaemons",
    "/Library/PrivilegedHelperTools",
    "/Library/Preferences",
    "/Library/Logs",
    "/Library/Internet Plug-Ins",
    "/Library/Audio/Plug-Ins",
    "/Library/Extensions",
    "/Library/Frameworks",
    "/Library/Receipts",
});

} // namespace loftmere::ProtectedLocations
