# What `cmake --install` puts where, in three components: what a program needs to run, what it needs
# to be built, and the programs.

include(CMakePackageConfigHelpers)

set(korvogit_package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/KorvoGitService)
set(korvogit_runtime COMPONENT KorvoGitService_runtime)
set(korvogit_development COMPONENT KorvoGitService_development)
set(korvogit_tools COMPONENT KorvoGitService_tools)

install(FILES ${korvogit_public_headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/KorvoGitService
        ${korvogit_development})

foreach(language IN LISTS korvogit_languages)
    install(FILES ${PROJECT_BINARY_DIR}/share/locale/${language}/LC_MESSAGES/KorvoGitService.mo
            DESTINATION ${CMAKE_INSTALL_LOCALEDIR}/${language}/LC_MESSAGES ${korvogit_runtime})
endforeach()
file(RELATIVE_PATH korvogit_locale_folder ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LOCALEDIR})
if(NOT korvogit_locale_folder STREQUAL "share/locale")
    message(WARNING "The library looks for its translations in share/locale of its prefix, but "
                    "CMAKE_INSTALL_LOCALEDIR puts them into ${CMAKE_INSTALL_FULL_LOCALEDIR}.")
endif()

# The two libraries are exported apart, because only a user of the static one needs the packages
# that the library itself links.
foreach(target IN ITEMS KorvoGitService KorvoGitService_static)
    install(TARGETS ${target} EXPORT ${target}
            LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} ${korvogit_runtime}
                    NAMELINK_${korvogit_development}
            ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} ${korvogit_development})
    install(EXPORT ${target} NAMESPACE KorvoGitService:: FILE ${target}.cmake
            DESTINATION ${korvogit_package_folder} ${korvogit_development})
endforeach()

file(RELATIVE_PATH korvogit_library_from_program
     ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
foreach(program IN ITEMS korvogit korvogit-emulator)
    if(TARGET ${program})
        install(TARGETS ${program}
                RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} ${korvogit_tools})
        set_target_properties(${program} PROPERTIES
                              INSTALL_RPATH "$ORIGIN/${korvogit_library_from_program}")
        file(GLOB manual_page CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/tools/${program}/${program}.1)
        if(manual_page)
            install(FILES ${manual_page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 ${korvogit_tools})
        endif()
    endif()
endforeach()

# Where bash-completion and zsh look. Distributions differ over zsh: Debian's packages have
# share/zsh/vendor-completions.
set(KORVOGIT_ZSH_COMPLETIONS_DIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING
    "Folder for the completion of zsh, below the prefix")
if(TARGET korvogit)
    set(completions ${PROJECT_SOURCE_DIR}/tools/korvogit/completions)
    install(FILES ${completions}/korvogit.bash RENAME korvogit
            DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions ${korvogit_tools})
    install(FILES ${completions}/_korvogit DESTINATION ${KORVOGIT_ZSH_COMPLETIONS_DIR}
            ${korvogit_tools})
endif()

configure_package_config_file(
    ${PROJECT_SOURCE_DIR}/cmake/KorvoGitServiceConfig.cmake.in
    ${PROJECT_BINARY_DIR}/KorvoGitServiceConfig.cmake
    INSTALL_DESTINATION ${korvogit_package_folder}
    PATH_VARS CMAKE_INSTALL_LOCALEDIR
    NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
    ${PROJECT_BINARY_DIR}/KorvoGitServiceConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES
        ${PROJECT_BINARY_DIR}/KorvoGitServiceConfig.cmake
        ${PROJECT_BINARY_DIR}/KorvoGitServiceConfigVersion.cmake
        DESTINATION ${korvogit_package_folder} ${korvogit_development})

# The pkg-config files name their own place relatively, so that an installed tree can be moved.
file(RELATIVE_PATH korvogit_prefix_from_pkgconfig
     ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" korvogit_prefix_from_pkgconfig "${korvogit_prefix_from_pkgconfig}")
foreach(description IN ITEMS KorvoGitService KorvoGitService-static)
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${description}.pc.in
                   ${PROJECT_BINARY_DIR}/${description}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${description}.pc
            DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig ${korvogit_development})
endforeach()

if(PROJECT_IS_TOP_LEVEL)
    include(cmake/Packages.cmake)
endif()
