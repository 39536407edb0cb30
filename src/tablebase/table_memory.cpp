#include "tablebase/table_memory.h"

#include <cstdio>
#include <cstdlib>

namespace quelmar {

static std::size_t total_bytes = 0;

void* try_allocate_table_memory(std::size_t bytes) {
    void* memory = std::malloc(bytes == 0 ? 1 : bytes);
    total_bytes += memory != nullptr ? bytes : 0;
    return memory;
}

void* allocate_table_memory(std::size_t bytes) {
    void* memory = try_allocate_table_memory(bytes);
    if (memory == nullptr) {
        std::printf("*** Cannot allocate %zu bytes of memory\n", bytes);
        std::exit(1);
    }
    return memory;
}

void free_table_memory(void* memory) {
    std::free(memory);
}

std::size_t table_memory_total() {
    return total_bytes;
}

}  // namespace quelmar
