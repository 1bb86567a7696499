# The target `tidy`: reads every source of the product with clang-tidy, one step a file, and again only when the file,
# a header that it includes, the checks or the flags have changed. Nothing is compiled but what Qt generates.

find_program(CLANG_TIDY clang-tidy-14 REQUIRED)

set(tidy_folder ${CMAKE_BINARY_DIR}/tidy)
file(GLOB_RECURSE tidy_checks CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/Vellux/.clang-tidy)
list(APPEND tidy_checks ${PROJECT_SOURCE_DIR}/.clang-tidy)
add_custom_target(tidy)

# vellux_tidy_target(TARGET) : adds the target's sources to what `tidy` reads.
function(vellux_tidy_target target)
  get_target_property(folder ${target} SOURCE_DIR)
  get_target_property(sources ${target} SOURCES)
  set(flags ${tidy_folder}/${target}.flags)
  file(GENERATE OUTPUT ${flags} CONTENT
    "$<TARGET_PROPERTY:${target},COMPILE_DEFINITIONS>\n$<TARGET_PROPERTY:${target},INCLUDE_DIRECTORIES>\n")
  set(stamps "")
  foreach(source IN LISTS sources)
    if(NOT source MATCHES "\\.cpp$")
      continue()
    endif()
    file(RELATIVE_PATH name ${PROJECT_SOURCE_DIR} ${folder}/${source})
    set(stamp ${tidy_folder}/${name}.stamp)
    get_filename_component(stamp_folder ${stamp} DIRECTORY)
    file(MAKE_DIRECTORY ${stamp_folder})
    add_custom_command(OUTPUT ${stamp}
      COMMAND ${CLANG_TIDY} -p ${CMAKE_BINARY_DIR} --quiet --extra-arg=-Wp,-MD,${stamp}.d,-MT,${stamp}
              ${folder}/${source}
      COMMAND ${CMAKE_COMMAND} -E touch ${stamp}
      DEPENDS ${folder}/${source} ${flags} ${tidy_checks}
      DEPFILE ${stamp}.d
      COMMENT "Reading ${name}"
      VERBATIM)
    list(APPEND stamps ${stamp})
  endforeach()
  add_custom_target(tidy_${target} DEPENDS ${stamps})
  get_target_property(generates ${target} AUTOMOC)
  if(generates)
    add_dependencies(tidy_${target} ${target}_autogen)
  endif()
  add_dependencies(tidy tidy_${target})
endfunction()

get_property(folders DIRECTORY ${PROJECT_SOURCE_DIR}/Vellux PROPERTY SUBDIRECTORIES)
foreach(folder ${PROJECT_SOURCE_DIR}/Vellux ${folders})
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(type ${target} TYPE)
    if(NOT type STREQUAL "UTILITY")
      vellux_tidy_target(${target})
    endif()
  endforeach()
endforeach()
