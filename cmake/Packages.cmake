# Debian packages, made by `cpack`: one of the library, one to build with it, one of the programs. Their
# dependencies are found out while they are made, from what the files link and what pkg-config names.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME korvogitservice)
set(CPACK_PACKAGE_VENDOR "The KorvoGitService developers")
# A placeholder: whoever gives packages to others says here, or with -D, who answers for them.
set(KORVOGIT_MAINTAINER "${CPACK_PACKAGE_VENDOR} <maintainers@korvogit.example>" CACHE STRING
    "Name and address of the maintainer of the Debian packages")
set(CPACK_PACKAGE_CONTACT "${KORVOGIT_MAINTAINER}")
set(CPACK_STRIP_FILES ON)

set(CPACK_COMPONENTS_ALL KorvoGitService_runtime KorvoGitService_development)
if(TARGET korvogit)
    list(APPEND CPACK_COMPONENTS_ALL KorvoGitService_tools)
endif()
set(CPACK_COMPONENT_KORVOGITSERVICE_DEVELOPMENT_DEPENDS KorvoGitService_runtime)
set(CPACK_COMPONENT_KORVOGITSERVICE_TOOLS_DEPENDS KorvoGitService_runtime)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# The system's authorities, which are trusted unless an application says otherwise.
set(CPACK_DEBIAN_KORVOGITSERVICE_RUNTIME_PACKAGE_RECOMMENDS ca-certificates)
set(CPACK_DEBIAN_KORVOGITSERVICE_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# korvogit_debian_package COMPONENT NAME SECTION SUMMARY DESCRIPTION
function(korvogit_debian_package component name section summary description)
    string(TOUPPER ${component} key)
    set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
    set(CPACK_DEBIAN_${key}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
endfunction()

korvogit_debian_package(KorvoGitService_runtime libkorvogitservice${PROJECT_VERSION_MAJOR} libs
    "${PROJECT_DESCRIPTION}"
    "KorvoGitService describes git hosting services, checks an account's
credentials and lists its repositories, inside a git application's process.
.
This package has the shared library.")
korvogit_debian_package(KorvoGitService_development libkorvogitservice-dev libdevel
    "${PROJECT_DESCRIPTION}, to build with"
    "KorvoGitService describes git hosting services, checks an account's
credentials and lists its repositories, inside a git application's process.
.
This package has the headers, the static library, and the descriptions for
CMake and pkg-config.")
korvogit_debian_package(KorvoGitService_tools korvogit-tools vcs
    "try accounts at git hosting services"
    "korvogit checks an account's credentials and lists its repositories.
korvogit-emulator answers as the hosting services do, so that an application
that uses KorvoGitService can be tested offline.")

# Read by the two scripts that cpack runs.
set(CPACK_KORVOGIT_SOURCE_DIR ${PROJECT_SOURCE_DIR})
set(CPACK_KORVOGIT_LIBDIR ${CMAKE_INSTALL_LIBDIR})
set(CPACK_KORVOGIT_PKGCONFIG_MODULES ${korvogit_pkgconfig_modules})
set(CPACK_PROJECT_CONFIG_FILE ${PROJECT_SOURCE_DIR}/cmake/debian/Control.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/debian/Files.cmake)

include(CPack)
