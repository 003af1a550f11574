# The examples in the pages under docs/, cut out of them: what people copy is what is compiled and
# run. Every ```c fence with an `int main` is a program of its own that must return 0; fences
# without one are not looked at. Examples contain no backticks.

# zt_add_page_examples(page)
# The examples of docs/<page>.md become the programs and ctest entries <page>_example_1, _2, ...
function(zt_add_page_examples page)
  set(file "${PROJECT_SOURCE_DIR}/docs/${page}.md")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
  file(READ "${file}" rest)
  set(count 0)
  while(rest MATCHES "\n```c\n([^`]*)\n```(.*)")  # the rest is no list: C is full of semicolons
    set(example "${CMAKE_MATCH_1}")
    set(rest "${CMAKE_MATCH_2}")
    if(NOT example MATCHES "int main")
      continue()
    endif()
    math(EXPR count "${count} + 1")
    set(name ${page}_example_${count})
    file(CONFIGURE OUTPUT ${name}.c CONTENT "${example}\n" @ONLY)
    add_executable(${name} "${CMAKE_CURRENT_BINARY_DIR}/${name}.c")
    set_target_properties(${name} PROPERTIES C_STANDARD 11 C_EXTENSIONS OFF)
    target_link_libraries(${name} PRIVATE zt::base zt_warnings Threads::Threads)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES LABELS unit TIMEOUT 60)
  endwhile()
  if(count EQUAL 0)
    message(FATAL_ERROR "docs/${page}.md has no example that could be compiled")
  endif()
endfunction()

foreach(page IN ITEMS containers services formats media)
  zt_add_page_examples(${page})
endforeach()
