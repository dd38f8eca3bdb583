# The hot loops, *_simd.cpp beside what uses them: compiled once for every instruction-set level (see pixelops/simd.h).
include(CheckCXXSourceCompiles)
file(GLOB simd_sources CONFIGURE_DEPENDS
    ${PROJECT_SOURCE_DIR}/pixelops/*_simd.cpp ${PROJECT_SOURCE_DIR}/effects/*/*_simd.cpp)

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

set(simd_objects)
foreach(level IN LISTS levels)
    add_library(simd_${level} OBJECT ${simd_sources})
    target_link_libraries(simd_${level} PRIVATE orvix_flags)
    # Optimised in any case: without inlining, the check finds code that all levels share.
    target_compile_options(simd_${level} PRIVATE ${flags_${level}} $<$<CONFIG:Debug>:-O1>)
    target_include_directories(simd_${level} SYSTEM PRIVATE ${highway})
    list(APPEND simd_objects $<TARGET_OBJECTS:simd_${level}>)
endforeach()
target_sources(orvix_pixelops INTERFACE ${simd_objects})
