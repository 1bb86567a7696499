# Keeps the core free: the configuration fails when vellux_core links a desktop or device library, and the
# build fails when one of its sources includes a header of one.

get_target_property(core_libraries vellux_core LINK_LIBRARIES)
foreach(library IN LISTS core_libraries)
  if(library MATCHES "[Qq]t|hidapi|udev|curl")
    message(FATAL_ERROR "vellux_core must not link ${library}: put it behind a port, into an adapter")
  endif()
endforeach()

file(GLOB_RECURSE core_files CONFIGURE_DEPENDS
  ${CMAKE_CURRENT_SOURCE_DIR}/*.h ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
list(FILTER core_files EXCLUDE REGEX "/adapters/|/main\\.cpp$")
set(core_free_stamp ${CMAKE_CURRENT_BINARY_DIR}/core-is-free.stamp)
add_custom_command(OUTPUT ${core_free_stamp}
  COMMAND ${CMAKE_COMMAND} -DSTAMP=${core_free_stamp} "-DFILES=${core_files}"
          -P ${CMAKE_CURRENT_LIST_DIR}/CheckCoreIncludes.cmake
  DEPENDS ${core_files} ${CMAKE_CURRENT_LIST_DIR}/CheckCoreIncludes.cmake
  COMMENT "Checking that the core includes no desktop or device library"
  VERBATIM)
add_custom_target(core_is_free DEPENDS ${core_free_stamp})
add_dependencies(vellux_core core_is_free)
