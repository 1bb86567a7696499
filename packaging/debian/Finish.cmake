# Run by `cpack` once the files are in place: adds and compresses what a Debian package has beside them, and strips the
# programs.

set(root ${CPACK_TEMPORARY_INSTALL_DIRECTORY})
set(packaging ${CPACK_VELLUX_SOURCE_DIR}/packaging)

# run(COMMAND...)
function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  set(usr ${root}/${component}/usr)
  set(doc ${usr}/share/doc/${component})
  file(MAKE_DIRECTORY ${doc})
  file(COPY ${packaging}/debian/copyright DESTINATION ${doc}
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
  run(${packaging}/debian/changelog ${component} ${CPACK_DEBIAN_PACKAGE_RELEASE} ${CPACK_PACKAGE_CONTACT}
    OUTPUT_FILE ${doc}/changelog.Debian)
  file(GLOB pages ${usr}/share/man/man1/*)
  run(gzip -9nf ${doc}/changelog.Debian ${pages})
  file(GLOB programs ${usr}/bin/*)
  run(strip --remove-section=.comment --remove-section=.note ${programs})
endforeach()
