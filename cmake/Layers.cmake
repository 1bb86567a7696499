# What each folder of the product, or module of a file or two, may use: the one place that says it. The build fails at
# an include that is not allowed here, and the configuration when the core links another library.
#
# name | what it may include of the product, beside itself | headers beyond those of the C++ library
set(layers
  "support            |                                            | arpa/inet.h fcntl.h sys/stat.h unistd.h"
  "threads            | support                                    |"
  "model              | threads support                            |"
  "ports              | threads support                            |"
  "AES128Transform    | support                                    | openssl/evp.h"
  "MF_Base64Additions | support                                    |"
  "AlertPopup         | ports threads                              |"
  "AboutDialog        | ports                                      |"
  "VelluxControl      | ports model threads support                |"
  "VelluxHttp         | AlertPopup ports model threads support     | nlohmann/json.hpp uuid/uuid.h"
  "VelluxWindowUi     | VelluxControl VelluxHttp AES128Transform MF_Base64Additions AlertPopup AboutDialog \
                        ports model threads support                |"
  "app                | VelluxWindowUi VelluxHttp ports model threads support            |"
  "VelluxAppDelegate  | VelluxWindowUi VelluxControl VelluxHttp AlertPopup ports threads |"
  "Program            | VelluxAppDelegate VelluxWindowUi ports threads                   |"
  "CommandLine        |                                            |"
  "main               | CommandLine app Program VelluxAppDelegate VelluxWindowUi VelluxHttp adapters | *"
  "adapters/curl      | ports threads support                      | *"
  "adapters/hidraw    | adapters/linux ports threads support       | *"
  "adapters/linux     | adapters/ApplicationId ports               | *"
  "adapters/dbus      | adapters/ApplicationId ports model threads | *"
  "adapters/qt        | adapters/ApplicationId adapters/dbus app VelluxWindowUi VelluxHttp \
                        ports model threads support                | *"
  "adapters           |                                            |")
set(core_may_link vellux_flags Threads::Threads OpenSSL::Crypto nlohmann_json::nlohmann_json PkgConfig::uuid)

if(CMAKE_SCRIPT_MODE_FILE) # checks FILES, paths relative to the folder of the product, and touches STAMP
  cmake_minimum_required(VERSION 3.25)
  set(wrong "")
  foreach(file IN LISTS FILES)
    foreach(layer IN LISTS layers)
      string(REGEX MATCH "^([^ |]+) *\\|(.*)\\|(.*)$" unused "${layer}")
      set(name ${CMAKE_MATCH_1})
      separate_arguments(used UNIX_COMMAND "${name} ${CMAKE_MATCH_2}")
      separate_arguments(foreign UNIX_COMMAND "${CMAKE_MATCH_3}")
      if(file MATCHES "^${name}[/.]")
        break()
      endif()
      set(name "")
    endforeach()
    if(NOT name)
      list(APPEND wrong "${file}: belongs to no layer")
      continue()
    endif()
    file(STRINGS ${SOURCE}/${file} includes REGEX "^[ \t]*#[ \t]*(include|import)")
    foreach(include IN LISTS includes)
      set(allowed FALSE)
      if(include MATCHES "#[ \t]*include[ \t]*<([^>]+)>")
        set(header ${CMAKE_MATCH_1})
        if(header MATCHES "^[a-z_]+$" OR header IN_LIST foreign OR foreign STREQUAL "*")
          set(allowed TRUE)
        endif()
      elseif(include MATCHES "#[ \t]*include[ \t]*\"([^\"]+)\"")
        set(header ${CMAKE_MATCH_1})
        foreach(other IN LISTS used)
          if(header MATCHES "^${other}[/.]")
            set(allowed TRUE)
          endif()
        endforeach()
        if(name STREQUAL "adapters/qt" AND header MATCHES "^ui_" OR header MATCHES "\\.moc$") # generated
          set(allowed TRUE)
        endif()
      endif()
      if(NOT allowed)
        list(APPEND wrong "${file}: ${name} may not have ${include}")
      endif()
    endforeach()
  endforeach()
  if(wrong)
    list(JOIN wrong "\n  " wrong)
    message(FATAL_ERROR "cmake/Layers.cmake does not allow\n  ${wrong}")
  endif()
  file(TOUCH ${STAMP})
  return()
endif()

get_target_property(core_libraries vellux_core LINK_LIBRARIES)
list(REMOVE_ITEM core_libraries ${core_may_link})
if(core_libraries)
  message(FATAL_ERROR "vellux_core must not link ${core_libraries}: put it behind a port, into an adapter")
endif()

file(GLOB_RECURSE layered_files RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} CONFIGURE_DEPENDS
  ${CMAKE_CURRENT_SOURCE_DIR}/*.h ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp)
set(layers_stamp ${CMAKE_CURRENT_BINARY_DIR}/layers.stamp)
add_custom_command(OUTPUT ${layers_stamp}
  COMMAND ${CMAKE_COMMAND} -DSTAMP=${layers_stamp} -DSOURCE=${CMAKE_CURRENT_SOURCE_DIR} "-DFILES=${layered_files}"
          -P ${CMAKE_CURRENT_LIST_FILE}
  DEPENDS ${layered_files} ${CMAKE_CURRENT_LIST_FILE}
  COMMENT "Checking what each folder includes"
  VERBATIM)
add_custom_target(layers DEPENDS ${layers_stamp})
add_dependencies(vellux_core layers)
