// All memory of the endgame tables goes through one routine, which ends the process when there is none left:
// an engine without the tables it was told to use would play on silently weaker.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace quelmar {

// Uninitialised memory. On failure prints a message and ends the process with exit status 1.
void* allocate_table_memory(std::size_t bytes);
// nullptr when there is not so much.
void* try_allocate_table_memory(std::size_t bytes);
void free_table_memory(void* memory);

// Lets the standard containers take their memory here.
template <typename T> struct TableAllocator {
    using value_type = T;
    TableAllocator() = default;
    template <typename U> TableAllocator(const TableAllocator<U>& /*other*/) {}
    T* allocate(std::size_t count) { return static_cast<T*>(allocate_table_memory(count * sizeof(T))); }
    void deallocate(T* memory, std::size_t /*count*/) { free_table_memory(memory); }
    friend bool operator==(const TableAllocator&, const TableAllocator&) { return true; }
};

template <typename T> using TableVector = std::vector<T, TableAllocator<T>>;
using TableString = std::basic_string<char, std::char_traits<char>, TableAllocator<char>>;

}  // namespace quelmar
