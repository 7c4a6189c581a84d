# What a package has besides what `cmake --install` puts into place: its copyright and changes, and default settings. Its
# manual pages are compressed.
function(compress file)
  execute_process(COMMAND gzip -9nf ${file} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(put file folder)
  file(COPY ${file} DESTINATION ${folder} FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
    DIRECTORY_PERMISSIONS ${CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
endfunction()

foreach(name ${CPACK_COMPONENTS_ALL})
  set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/${name})
  set(documents ${root}/usr/share/doc/${name})
  put(${CPACK_KALVEX_DEBIAN}/copyright ${documents})
  execute_process(COMMAND date -R -u -d ${CPACK_KALVEX_DATE} OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE
    COMMAND_ERROR_IS_FATAL ANY)
  string(JOIN "\n" changes
    "kalvex (${CPACK_PACKAGE_VERSION}) stable; urgency=medium"
    "" "  * Changes are told in CHANGELOG.md of the package kalvex-doc."
    "" " -- ${CPACK_PACKAGE_CONTACT}  ${date}" "")
  file(WRITE ${documents}/changelog "${changes}")
  compress(${documents}/changelog)
  file(GLOB pages ${root}/usr/share/man/man*/*.[1-8])
  foreach(page ${pages})
    compress(${page})
  endforeach()
  file(GLOB settings ${CPACK_KALVEX_DEBIAN}/${name}.etc/*)
  foreach(file ${settings})
    put(${file} ${root}/etc/sorvane)
  endforeach()
endforeach()
# The licence is a part of every system.
file(REMOVE ${CPACK_TEMPORARY_INSTALL_DIRECTORY}/kalvex-doc/usr/share/doc/kalvex/LICENSE)
