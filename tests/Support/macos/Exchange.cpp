#include "tests/Support/SwapRig.h"

#include <cstdio>

bool loftmere::test::exchange(const char* one, const char* other) {
    return ::renamex_np(one, other, RENAME_SWAP) == 0;
}
