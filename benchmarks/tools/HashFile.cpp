// Prints what Hasher64 answers for a file: HashFile FILE.
#include "CleanerCore/Scanning/Duplicates/Hasher64.h"

#include <fmt/format.h>

int main(int count, char** arguments) {
    if (count != 2) return 2;
    fmt::print("{}\n", loftmere::Hasher64::hash(arguments[1]).value_or("unreadable"));
}
