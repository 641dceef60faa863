#include "tests/Support/SwapRig.h"

#include <fcntl.h>

#include <cstdio>

bool loftmere::test::exchange(const char* one, const char* other) {
    return ::renameat2(AT_FDCWD, one, AT_FDCWD, other, RENAME_EXCHANGE) == 0;
}
