# Builds manual pages from pages of the documentation.
include(GNUInstallDirs)
find_program(PROGKEYS_LOWDOWN lowdown REQUIRED DOC "Converts Markdown; Debian's package lowdown")
set(PROGKEYS_MAN_PAGE ${CMAKE_CURRENT_LIST_DIR}/man-page)

# progkeys_man_page(<component> <name> <section> <page.md> <summary>): builds and installs a
# manual page.
function(progkeys_man_page component name section source summary)
  get_filename_component(source ${source} ABSOLUTE)
  set(directory ${CMAKE_BINARY_DIR}/share/man/man${section})
  set(page ${directory}/${name}.${section})
  file(MAKE_DIRECTORY ${directory})
  add_custom_command(OUTPUT ${page}
    COMMAND ${PROGKEYS_MAN_PAGE} ${PROGKEYS_LOWDOWN} ${source} ${name} ${section} ${summary}
            ${PROJECT_VERSION} > ${page}
    DEPENDS ${PROGKEYS_MAN_PAGE} ${source} VERBATIM)
  add_custom_target(progkeys_man_${name} ALL DEPENDS ${page})
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
endfunction()
