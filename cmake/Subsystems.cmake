# splinecore_subsystem(<name> [USES <subsystem>...] FILES <file>...)
#
# Declares the files of src/<name>/ that ship, and which other subsystems
# they may include. A subsystem may use only subsystems declared before it,
# so the order of the declarations in src/subsystems.cmake is the dependency
# order and no cycle can be written. Every file may include the public
# headers (splinecore/...), marrow's, its own subsystem's and those of the
# subsystems it USES; anything else fails here, at configure time, and in the
# layout.include_direction test (cmake -P cmake/CheckLayout.cmake).
#
# Appends to SPLINECORE_SOURCES (the .cpp files, absolute),
# SPLINECORE_SUBSYSTEMS and SPLINECORE_LISTED (<name>/<file>) in the
# caller's scope; SPLINECORE_SOURCE_ROOT is the project's source directory.
function(splinecore_subsystem name)
  cmake_parse_arguments(arg "" "" "USES;FILES" ${ARGN})
  foreach(used IN LISTS arg_USES)
    if(NOT used IN_LIST SPLINECORE_SUBSYSTEMS)
      message(FATAL_ERROR "subsystem ${name} uses ${used}, which is not declared before it")
    endif()
  endforeach()
  set(allowed ${name} ${arg_USES} splinecore marrow)
  set(sources ${SPLINECORE_SOURCES})
  set(listed ${SPLINECORE_LISTED})
  foreach(file IN LISTS arg_FILES)
    list(APPEND listed ${name}/${file})
    set(path ${SPLINECORE_SOURCE_ROOT}/src/${name}/${file})
    if(NOT EXISTS ${path})
      message(FATAL_ERROR "src/${name}/${file} is listed but does not exist")
    endif()
    file(STRINGS ${path} includes REGEX "^#include \"")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE "^#include \"([^/\"]*)/?.*\"" "\\1" included "${line}")
      if(NOT included IN_LIST allowed)
        message(FATAL_ERROR "src/${name}/${file}: ${line} breaks the dependency order: "
          "${name} may include only ${allowed} (src/subsystems.cmake)")
      endif()
    endforeach()
    if(file MATCHES "\\.cpp$")
      list(APPEND sources ${path})
    endif()
  endforeach()
  set(SPLINECORE_SOURCES ${sources} PARENT_SCOPE)
  set(SPLINECORE_SUBSYSTEMS ${SPLINECORE_SUBSYSTEMS} ${name} PARENT_SCOPE)
  set(SPLINECORE_LISTED ${listed} PARENT_SCOPE)
endfunction()

# Every file under src/ must be listed: what ships is what the table says.
function(splinecore_check_all_listed)
  file(GLOB_RECURSE present RELATIVE ${SPLINECORE_SOURCE_ROOT}/src
    ${SPLINECORE_SOURCE_ROOT}/src/*.cpp ${SPLINECORE_SOURCE_ROOT}/src/*.h)
  foreach(file IN LISTS present)
    if(NOT file IN_LIST SPLINECORE_LISTED)
      message(FATAL_ERROR "src/${file} is not listed in src/subsystems.cmake")
    endif()
  endforeach()
endfunction()
