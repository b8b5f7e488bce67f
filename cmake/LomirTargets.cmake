# Helpers that keep the libraries' boundaries.

# lomir_public_headers(TARGET HEADER...)
# Links each header (a path relative to the current source folder) into a folder of the
# build tree at its path from LOMIR_SOURCE_ROOT ("core/base/result.h") and puts that
# folder on the target's public include path. Code that links the target reaches these
# headers and no others.
function(lomir_public_headers target)
  set(include_dir ${CMAKE_CURRENT_BINARY_DIR}/include/${target})
  file(RELATIVE_PATH prefix ${LOMIR_SOURCE_ROOT} ${CMAKE_CURRENT_SOURCE_DIR})
  file(REMOVE_RECURSE ${include_dir})
  foreach(header IN LISTS ARGN)
    set(link ${include_dir}/${prefix}/${header})
    get_filename_component(folder ${link} DIRECTORY)
    file(MAKE_DIRECTORY ${folder})
    file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR}/${header} ${link} SYMBOLIC)
  endforeach()
  target_include_directories(${target} PUBLIC ${include_dir})
endfunction()

# lomir_add_library(TARGET SOURCES file... PUBLIC_HEADERS header... PRIVATE_HEADERS header...)
# A static library of our own: built with our warnings, its own sources reach all its
# headers, the code that links it only the public ones.
function(lomir_add_library target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;PUBLIC_HEADERS;PRIVATE_HEADERS")
  add_library(${target} STATIC ${arg_SOURCES} ${arg_PUBLIC_HEADERS} ${arg_PRIVATE_HEADERS})
  lomir_public_headers(${target} ${arg_PUBLIC_HEADERS})
  target_include_directories(${target} PRIVATE ${LOMIR_SOURCE_ROOT})
  target_link_libraries(${target} PRIVATE lomir_warnings)
endfunction()

# Collects every target that TARGET links, directly or through other targets.
function(_lomir_linked_targets target result)
  set(seen ${${result}})
  foreach(property LINK_LIBRARIES INTERFACE_LINK_LIBRARIES)
    get_target_property(libraries ${target} ${property})
    if(NOT libraries)
      continue()
    endif()
    foreach(library IN LISTS libraries)
      string(REGEX REPLACE "^\\$<LINK_ONLY:(.*)>$" "\\1" library "${library}")
      if(TARGET ${library})
        get_target_property(aliased ${library} ALIASED_TARGET)
        if(aliased)
          set(library ${aliased})
        endif()
        if(NOT library IN_LIST seen)
          list(APPEND seen ${library})
          _lomir_linked_targets(${library} seen)
        endif()
      endif()
    endforeach()
  endforeach()
  set(${result} ${seen} PARENT_SCOPE)
endfunction()

function(_lomir_check_forbidden_link target forbidden)
  get_target_property(forbidden_target ${forbidden} ALIASED_TARGET)
  if(NOT forbidden_target)
    set(forbidden_target ${forbidden})
  endif()
  set(linked)
  _lomir_linked_targets(${target} linked)
  if(forbidden_target IN_LIST linked OR forbidden IN_LIST linked)
    message(FATAL_ERROR "${target} must not link ${forbidden}, directly or through another "
                        "library: it builds on QtCore and QtGui alone. Move the code that "
                        "needs ${forbidden} into lomir_widgets.")
  endif()
endfunction()

# lomir_forbid_link(TARGET FORBIDDEN)
# Fails the configuration if TARGET links FORBIDDEN, directly or transitively. The check
# runs once the whole project is configured, so links added anywhere are seen.
function(lomir_forbid_link target forbidden)
  # A deferred call reads its arguments when it runs: spell the values in now.
  cmake_language(EVAL CODE "
    cmake_language(DEFER DIRECTORY [[${CMAKE_SOURCE_DIR}]]
                   CALL _lomir_check_forbidden_link [[${target}]] [[${forbidden}]])")
endfunction()
