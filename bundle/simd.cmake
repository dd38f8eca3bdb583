# The hot loops, *_simd.cpp beside what uses them: compiled once for every instruction-set level (see pixelops/simd.h).
include(CheckCXXSourceCompiles)
file(GLOB simd_pixelops CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/pixelops/*_simd.cpp)
file(GLOB simd_effects CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/effects/*/*_simd.cpp)

check_cxx_source_compiles("#if !defined(__x86_64__)\n#error\n#endif\nint main() {}" ORVIX_X86_64)
if(ORVIX_X86_64)
    set(levels v2 v3 v4)
    set(flags_v2 -march=x86-64-v2)
    set(flags_v3 -march=x86-64-v3)
    set(flags_v4 -march=x86-64-v4 -mavx512vbmi)
else()
    set(levels plain)
endif()

# Highway's headers alone, by a folder of their own: when cross-compiling, the system's include folder must stay out.
find_path(HIGHWAY_INCLUDE_DIR hwy/highway.h REQUIRED NO_CMAKE_FIND_ROOT_PATH)
set(highway ${PROJECT_BINARY_DIR}/highway)
file(MAKE_DIRECTORY ${highway})
file(CREATE_LINK ${HIGHWAY_INCLUDE_DIR}/hwy ${highway}/hwy SYMBOLIC)

# simd_pixelops_objects and simd_effects_objects: what there is to link.
foreach(part IN ITEMS pixelops effects)
    set(simd_${part}_objects)
    foreach(level IN LISTS levels)
        set(target simd_${part}_${level})
        add_library(${target} OBJECT ${simd_${part}})
        target_link_libraries(${target} PRIVATE orvix_flags)
        # Optimised in any case: without inlining, the check finds code that all levels share.
        target_compile_options(${target} PRIVATE ${flags_${level}} $<$<CONFIG:Debug>:-O1>)
        target_include_directories(${target} SYSTEM PRIVATE ${highway})
        list(APPEND simd_${part}_objects $<TARGET_OBJECTS:${target}>)
    endforeach()
endforeach()
