# Debian packages, one a component of the installation; docs/operations.md tells what each has.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kalvex)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR Sorvane)
set(CPACK_PACKAGE_CONTACT "Sorvane <packages@sorvane.example>")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What depends on the version is worked out when the packages are made, the rest of their files is put beside them.
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_LIST_DIR}/package_versions.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/package_files.cmake)
set(CPACK_KALVEX_DEBIAN ${CMAKE_CURRENT_LIST_DIR}/debian)
set(CPACK_KALVEX_DATE ${KALVEX_DATE})

# kalvex_package(name section synopsis description): the scripts debian/NAME.* are those of the maintainer.
set(CPACK_COMPONENTS_ALL)
macro(kalvex_package name section synopsis description)
  list(APPEND CPACK_COMPONENTS_ALL ${name})
  string(TOUPPER ${name} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name})
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section})
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${synopsis}\n${description}")
  set(control)
  foreach(script conffiles postinst prerm postrm)
    set(source ${CMAKE_CURRENT_SOURCE_DIR}/debian/${name}.${script})
    if(EXISTS ${source})
      configure_file(${source} ${CMAKE_CURRENT_BINARY_DIR}/debian/${name}/${script} COPYONLY)
      list(APPEND control ${CMAKE_CURRENT_BINARY_DIR}/debian/${name}/${script})
    endif()
  endforeach()
  set(CPACK_DEBIAN_${key}_PACKAGE_CONTROL_EXTRA "${control}")
endmacro()

kalvex_package(kalvex misc "script module of the Sorvane SCADA family"
  "Runs line-oriented scripts that read and change process variables: as a\nservice, at a prompt and in a build server, with a console for the terminal.")
kalvex_package(kalvex-common misc "files that the programs of Kalvex share"
  "Translations, the account of the services, and the profile of the machine.")
kalvex_package(kalvex-doc doc "documents and examples of Kalvex"
  "The reference of the language, the manuals of the programs and scripts to\nlearn from.")
kalvex_package(sorvane-server misc "data server of the Sorvane SCADA family"
  "Keeps process variables with their current values, archives and reports, and\ngives them to its clients.")
if(TARGET kalvex)
  kalvex_package(kalvex-window misc "script module of the Sorvane SCADA family, with its window"
    "Write, run and debug scripts, or look after those of a service.")
endif()
# What is loaded at run time, which no linker tells.
set(CPACK_KALVEX_LOADED "libcurl4, libxcb1")
set(CPACK_DEBIAN_KALVEX-COMMON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_KALVEX-DOC_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_KALVEX_PACKAGE_SUGGESTS "kalvex-doc, sorvane-server")
set(CPACK_DEBIAN_SORVANE-SERVER_PACKAGE_SUGGESTS "kalvex, kalvex-doc")
set(CPACK_DEBIAN_KALVEX-WINDOW_PACKAGE_RECOMMENDS "qt6-translations-l10n")
set(CPACK_DEBIAN_KALVEX-WINDOW_PACKAGE_SUGGESTS "kalvex-doc")
include(CPack)
