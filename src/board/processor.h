// Which instructions the processor has beyond those that every machine of its kind has. The build itself uses
// none of them; a few functions that gain much are compiled once more with them, and the copy to run is
// chosen here.
#pragma once

namespace quelmar {

// Clang does not make the callees part of the copy, and 32-bit processors seldom have the instructions.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)

// Goes before the second copy of a function; everything that it calls becomes part of it.
#define QUELMAR_MODERN_COPY [[gnu::flatten, gnu::target("popcnt,bmi,bmi2,avx2")]]
// Goes before a function for such copies that asks for an instruction by its name.
#define QUELMAR_IN_MODERN_COPY [[gnu::target("popcnt,bmi,bmi2,avx2")]]
#define QUELMAR_HAS_MODERN_COPY

// Whether to run the copies; false until find_modern_processor() has looked.
inline bool modern_processor = false;

// Part of start-up. Without it everything works the same, only slower. Processors that have pext but take
// dozens of cycles for it are none of the modern ones.
inline void find_modern_processor() {
    __builtin_cpu_init();
    const bool has_slow_pext =
        __builtin_cpu_is("bdver4") || __builtin_cpu_is("znver1") || __builtin_cpu_is("znver2");
    modern_processor = __builtin_cpu_supports("popcnt") && __builtin_cpu_supports("bmi") &&
                       __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("avx2") && !has_slow_pext;
}

#else

#define QUELMAR_MODERN_COPY

inline constexpr bool modern_processor = false;
inline void find_modern_processor() {}

#endif

}  // namespace quelmar
