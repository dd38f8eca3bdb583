// The choice of the instruction-set level.
#include "pixelops/simd.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace simd {
namespace {

#if defined(__x86_64__)

constexpr const char* kNames[kLevels] = {"v2", "v3", "v4"};

constexpr unsigned bits(std::initializer_list<int> numbers) {
    unsigned result = 0;
    for (const int number : numbers) result |= 1u << number;
    return result;
}

enum Register { EAX, EBX, ECX, EDX };

// Feature bits of the processor that a level's code may use.
struct Need {
    int level;
    unsigned leaf;
    Register where;
    unsigned features;
};

constexpr Need kNeeds[] = {
    {1, 1, ECX, bits({12, 22, 27, 28, 29})}, // FMA, MOVBE, OSXSAVE, AVX, F16C
    {1, 7, EBX, bits({3, 5, 8})},            // BMI1, AVX2, BMI2
    {1, 0x80000001, ECX, bits({5})},         // LZCNT
    {2, 7, EBX, bits({16, 17, 28, 30, 31})}, // AVX-512 F, DQ, CD, BW, VL
    {2, 7, ECX, bits({1})},                  // AVX-512 VBMI
};

// The registers that the system saves when it switches threads: SSE and AVX; for AVX-512 also masks and the wide ones.
constexpr unsigned kSaved[kLevels] = {0, bits({1, 2}), bits({1, 2, 5, 6, 7})};

bool has(const Need& need) {
    unsigned registers[4] = {};
    __get_cpuid_count(need.leaf, 0, &registers[EAX], &registers[EBX], &registers[ECX], &registers[EDX]);
    return (registers[need.where] & need.features) == need.features;
}

unsigned savedRegisters() {
    unsigned low = 0, high = 0;
    __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

int best() {
    int level = kLevels - 1;
    for (const Need& need : kNeeds) {
        if (!has(need)) level = std::min(level, need.level - 1);
    }
    while (level > 0 && (savedRegisters() & kSaved[level]) != kSaved[level]) --level;
    return level;
}

int wanted() {
    const char* name = std::getenv("ORVIX_SIMD");
    const auto* found = std::find(std::begin(kNames), std::end(kNames), std::string_view(name != nullptr ? name : ""));
    return static_cast<int>(found - kNames);
}

int choose() { return std::min(best(), wanted()); }

#else

int choose() { return 0; }

#endif

} // namespace

int level() {
    static const int chosen = choose();
    return chosen;
}

} // namespace simd
