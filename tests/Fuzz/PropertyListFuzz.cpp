#include "CleanerCore/Support/PropertyList.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    (void)loftmere::PropertyList::parse({reinterpret_cast<const char*>(data), size});
    return 0;
}
