// Prints what FS::allocatedSize answers for a folder.
#include "CleanerCore/Files/FS.h"

#include <fmt/format.h>

int main(int count, char** arguments) {
    if (count != 2) return 2;
    fmt::print("{}\n", loftmere::FS::allocatedSize(arguments[1]));
}
