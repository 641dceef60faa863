// Deletes what stands at a path with the product's own removal: RemoveTree PATH.
#include "CleanerCore/Platform/Removal.h"

#include <cstdio>

int main(int count, char** arguments) {
    if (count != 2) return 2;
    const auto place = loftmere::Place::open(arguments[1]);
    const auto done = place ? loftmere::removeItem(*place) : loftmere::failed(place.error());
    if (done) return 0;
    std::fprintf(stderr, "%s\n", done.error().message.c_str());
    return 1;
}
