#pragma once

#include <string>
#include <string_view>

namespace loftmere {

// A path is a std::string. These operations work on its text alone and never touch the disk.

// "/a/b" of "/a/b//"; "/" stays "/". The system follows a link whose name ends in a slash.
std::string_view withoutTrailingSlashes(std::string_view path);

// "c.txt" of "/a/b/c.txt"; "/" of "/". Trailing slashes are ignored.
std::string lastPathComponent(std::string_view path);

// "txt" of "c.txt"; empty for "c", ".hidden" and "c.".
std::string pathExtension(std::string_view path);

// "/a/b" of "/a/b/c"; "/" of "/a"; empty for a relative path of one component.
std::string parentPath(std::string_view path);

// Exactly one "/" between the two.
std::string joinPath(std::string_view folder, std::string_view relative);

// The path without repeated and trailing slashes, "." and "..", judged by its text alone. A ".." at the root
// of an absolute path is dropped, a leading one of a relative path stays. An empty path stays empty.
std::string standardizedPathText(std::string_view path);

// Whether `path` equals `root` or lies below it, by whole components and by bytes.
bool isAtOrUnder(std::string_view path, std::string_view root);

} // namespace loftmere
