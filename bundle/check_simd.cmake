# Fails when an object of an instruction-set level shares inline code with the rest: the linker keeps one copy, which may
# hold instructions that the processor lacks. Arguments after "-P file": the objects; NM: the tool.
set(shared)
math(EXPR last "${CMAKE_ARGC} - 1")
foreach(i RANGE ${last})
    set(object ${CMAKE_ARGV${i}})
    if(object MATCHES "_simd\\.cpp\\.[a-z]+$")
        execute_process(COMMAND ${NM} --defined-only -C ${object} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
        string(REGEX MATCHALL "[^\n]* [uvVwW] [^\n]*" weak "${symbols}")
        list(FILTER weak EXCLUDE REGEX "(::v[234]::|hwy::N_|DW\\.ref\\.)") # the last are pointers, no code
        foreach(symbol IN LISTS weak)
            list(APPEND shared "${object}: ${symbol}")
        endforeach()
    endif()
endforeach()
if(shared)
    list(JOIN shared "\n" shared)
    message(FATAL_ERROR "Inline code outside the level's namespace:\n${shared}")
endif()
