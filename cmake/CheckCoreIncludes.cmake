# Script mode: fails when one of FILES includes a header of Qt, hidapi, udev or curl; else touches STAMP.
foreach(file IN LISTS FILES)
  file(STRINGS ${file} lines REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"](Q[A-Z]|Qt|hidapi|libudev|curl/|adapters/)")
  if(lines)
    message(FATAL_ERROR "${file}: the core includes what only adapters may: ${lines}")
  endif()
endforeach()
file(TOUCH ${STAMP})
