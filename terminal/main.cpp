#include "terminal/Verbs.h"

int main(int argc, char** argv) {
    return loftmere::runCommandLine(argc, argv);
}
