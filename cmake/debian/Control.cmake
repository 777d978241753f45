# What the packages' control files say beyond what CMake knows when it configures. Read by cpack before it
# begins.

# Each package has a summary of its own, which this one would come before.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")

# The development package needs, besides the library, what the pkg-config files and the CMake package of the
# static library lead to.
foreach(module IN LISTS CPACK_KORVOGIT_PKGCONFIG_MODULES)
    execute_process(COMMAND pkg-config --variable=pcfiledir ${module}
                    OUTPUT_VARIABLE folder OUTPUT_STRIP_TRAILING_WHITESPACE
                    COMMAND_ERROR_IS_FATAL ANY)
    execute_process(COMMAND dpkg-query --search ${folder}/${module}.pc
                    OUTPUT_VARIABLE owner COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX REPLACE "[:,].*" "" owner "${owner}")
    list(APPEND needed ${owner})
endforeach()
list(REMOVE_DUPLICATES needed)
list(JOIN needed ", " needed)
set(CPACK_DEBIAN_KORVOGITSERVICE_DEVELOPMENT_PACKAGE_DEPENDS "${needed}")
