#include "tablebase/table_memory.h"

#include <cstdio>
#include <cstdlib>

namespace quelmar {

void* try_allocate_table_memory(std::size_t bytes) {
    return std::malloc(bytes == 0 ? 1 : bytes);
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

}  // namespace quelmar
