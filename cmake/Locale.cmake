# Strings tables: po/LANGUAGE.po becomes share/locale/LANGUAGE/LC_MESSAGES/KorvoGitService.mo.

find_package(Gettext REQUIRED)
file(GLOB korvogit_translations CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/po/*.po)
set(korvogit_languages)
set(korvogit_catalogues)
foreach(translation IN LISTS korvogit_translations)
    cmake_path(GET translation STEM LAST_ONLY language)
    set(folder ${PROJECT_BINARY_DIR}/share/locale/${language}/LC_MESSAGES)
    set(catalogue ${folder}/KorvoGitService.mo)
    add_custom_command(
        OUTPUT ${catalogue}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${folder}
        COMMAND ${GETTEXT_MSGFMT_EXECUTABLE} --check -o ${catalogue} ${translation}
        DEPENDS ${translation}
        COMMENT "Compiling strings table ${language}"
        VERBATIM)
    list(APPEND korvogit_languages ${language})
    list(APPEND korvogit_catalogues ${catalogue})
endforeach()
add_custom_target(KorvoGitService_locale DEPENDS ${korvogit_catalogues})

# Whoever builds one of the libraries gets its texts too.
foreach(library IN ITEMS KorvoGitService KorvoGitService_static)
    add_dependencies(${library} KorvoGitService_locale)
endforeach()
