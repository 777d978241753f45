# What a Debian package has beyond what `cmake --install` makes: a copyright file, change logs, packed
# manual pages, an archive without debug information, programs that leave it to the system where
# libraries are. Run by cpack when the files stand in their components' folders.

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)

function(pack file)
    execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(add_documentation prefix package)
    set(folder ${prefix}/share/doc/${package})
    file(READ ${CPACK_KORVOGIT_SOURCE_DIR}/LICENSE license)
    file(WRITE ${folder}/copyright "KorvoGitService\n\n${license}")
    configure_file(${CPACK_KORVOGIT_SOURCE_DIR}/CHANGELOG.md ${folder}/changelog COPYONLY)
    pack(${folder}/changelog)
    file(WRITE ${folder}/changelog.Debian
         "${CPACK_PACKAGE_NAME} (${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE}) unstable; urgency=medium\n\n"
         "  * Version ${CPACK_PACKAGE_VERSION}; changelog.gz says what changed.\n\n"
         " -- ${CPACK_PACKAGE_CONTACT}  ${date}\n")
    pack(${folder}/changelog.Debian)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} key)
    set(prefix ${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX})
    add_documentation(${prefix} ${CPACK_DEBIAN_${key}_PACKAGE_NAME})
    file(GLOB manual_pages ${prefix}/share/man/man1/*.1)
    foreach(page IN LISTS manual_pages)
        pack(${page})
    endforeach()
    file(GLOB programs ${prefix}/bin/*)
    foreach(program IN LISTS programs)
        file(RPATH_REMOVE FILE ${program})
    endforeach()
    file(GLOB archives ${prefix}/${CPACK_KORVOGIT_LIBDIR}/*.a)
    foreach(archive IN LISTS archives)
        execute_process(COMMAND strip --strip-debug --enable-deterministic-archives ${archive}
                        COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
endforeach()
