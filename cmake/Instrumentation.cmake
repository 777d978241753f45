# Warnings, sanitizers, fuzzing and coverage. All of these are of the whole directory tree, tools and tests
# included, and none reaches a project that embeds this one.

if(KORVOGIT_DEVELOPER_WARNINGS)
    add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
                        $<$<CXX_COMPILER_ID:GNU>:-Wunused-const-variable=1>)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        # With optimization it takes std::optional, std::variant and "literal" + std::string, once
        # inlined, for faults (GCC bugs 80635, 105651); clang looks for the same without these errors.
        # Not in debug builds, whose commands clangd reads, which does not know the options.
        add_compile_options($<$<NOT:$<CONFIG:Debug>>:-Wno-restrict>
                            $<$<NOT:$<CONFIG:Debug>>:-Wno-maybe-uninitialized>
                            $<$<NOT:$<CONFIG:Debug>>:-Wno-stringop-overflow>
                            $<$<NOT:$<CONFIG:Debug>>:-Wno-array-bounds>)
    endif()
endif()

if(CMAKE_UNITY_BUILD)
    # There a name hides that of another source, and a source is taken for a header, whose unnamed namespaces
    # would be faults; the plain builds look for real ones.
    add_compile_options(-Wno-shadow $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()

if(KORVOGIT_SANITIZE)
    add_compile_options(-fsanitize=${KORVOGIT_SANITIZE} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${KORVOGIT_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # Instrumented code confuses the flow analysis behind these two; the plain build has them.
        add_compile_options(-Wno-error=maybe-uninitialized -Wno-error=tsan)
    endif()
endif()

# Tells the fuzzing programs which places of the library an input reached.
if(KORVOGIT_FUZZ)
    add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(KORVOGIT_COVERAGE)
    add_compile_options(--coverage -fprofile-update=atomic)
    add_link_options(--coverage)
endif()
