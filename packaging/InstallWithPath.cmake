# Run by `cmake --install`, with DESTDIR, too: installs the key file `template` below `destination`, after its command
# "vellux" has become the full path that the prefix gives it. `staging` is a folder for the file on its way.

foreach(directory IN ITEMS bindir destination)
  if(NOT IS_ABSOLUTE "${${directory}}")
    set(${directory} "${CMAKE_INSTALL_PREFIX}/${${directory}}")
  endif()
endforeach()
set(program "${bindir}/vellux")
if(program MATCHES "[\"'`$\\%]")
  message(FATAL_ERROR "A menu entry can't start ${program}: install to a folder without quotes, $, % and \\")
elseif(program MATCHES "[^A-Za-z0-9/._+-]")
  set(program "\"${program}\"")
endif()

get_filename_component(name "${template}" NAME)
file(READ "${template}" text)
string(REPLACE "\nExec=vellux\n" "\nExec=${program}\n" text "${text}")
file(WRITE "${staging}/${name}" "${text}")
file(INSTALL DESTINATION "${destination}" TYPE FILE FILES "${staging}/${name}"
  PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
file(REMOVE "${staging}/${name}") # it may be root's
