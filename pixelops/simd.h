// Hot loops are compiled once per instruction-set level; calls go to the level that suits the processor. Such a loop is
// declared in a header as
//     extern const simd::Function<void(const float* from, float* to, std::size_t count)> sharpenRow;
// and defined in a *_simd.cpp, in the same namespace, as an ordinary function inside `namespace SIMD_LEVEL`, followed
// by SIMD_FUNCTION(sharpenRow). The build compiles these files for every level. They must not use inline functions that
// other files use as well (the standard library's, for instance), since the linker keeps one copy of those, which might
// be the one with instructions that an older processor lacks; the build fails if one does.
#pragma once

namespace simd {

#if defined(__x86_64__)
inline constexpr int kLevels = 3;
#else
inline constexpr int kLevels = 1;
#endif

// The index of the level in use: the highest that processor and system support. The environment variable ORVIX_SIMD
// (v2, v3 or v4) lowers it. Does not change after the first call.
int level();

template <class>
struct Function;

template <class R, class... Arguments>
struct Function<R(Arguments...)> {
    using Type = R(Arguments...);
    R operator()(Arguments... arguments) const { return levels[level()](arguments...); }

    R (*levels[kLevels])(Arguments...);
};

// Of two functions that do the same to bytes and to floats, the one for a type of components.
template <class T, class Bytes, class Floats>
constexpr const auto& forType(const Bytes& bytes, const Floats& floats) {
    if constexpr (sizeof(T) == 1) {
        return bytes;
    } else {
        return floats;
    }
}

} // namespace simd

// SIMD_LEVEL is the namespace of the level that the compiler's flags ask for. The first level's object holds the table.
#if !defined(__x86_64__)
#define SIMD_LEVEL plain
#define SIMD_FUNCTION(name) constinit decltype(name) name = {{plain::name}}
#elif defined(__AVX512VBMI__)
#define SIMD_LEVEL v4
#elif defined(__AVX2__)
#define SIMD_LEVEL v3
#else
#define SIMD_LEVEL v2
#define SIMD_FUNCTION(name)    \
    namespace v3 {             \
    decltype(name)::Type name; \
    }                          \
    namespace v4 {             \
    decltype(name)::Type name; \
    }                          \
    constinit decltype(name) name = {{v2::name, v3::name, v4::name}}
#endif
#ifndef SIMD_FUNCTION
#define SIMD_FUNCTION(name) static_assert(true)
#endif
