# Compiler flags of the library, in two interface targets:
#   zt_warnings  what every target of this project is compiled with
#   zt_code      what the library itself is compiled with on top

set(CMAKE_C_STANDARD 11)
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)

add_library(zt_warnings INTERFACE)
target_compile_options(zt_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wundef -Wvla -Wcast-align
  # Formats that an application chooses are passed on: they cannot be literals.
  -Wformat=2 -Wno-format-nonliteral
  $<$<BOOL:${ZT_WERROR}>:-Werror>)
if(ZT_SANITIZE)
  target_compile_options(zt_warnings INTERFACE -fsanitize=${ZT_SANITIZE} -fno-sanitize-recover=all)
  target_link_options(zt_warnings INTERFACE -fsanitize=${ZT_SANITIZE})
endif()

add_library(zt_code INTERFACE)
target_link_libraries(zt_code INTERFACE zt_warnings)
target_compile_options(zt_code INTERFACE
  -Wconversion -Wcast-qual
  -fno-exceptions -fno-rtti
  -fno-omit-frame-pointer -fasynchronous-unwind-tables
  -fstack-protector-strong
  # Everything is bound at load time: calls go through the address table, without a stub in between.
  -fno-plt
  # Hot loops are few and short here; padding before every jump's target is a tenth of the code.
  "$<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-align-functions;-fno-align-jumps;-fno-align-labels;-fno-align-loops>"
  # Exported operations stay replaceable by the application; GCC's -fPIC implies it, Clang's does not.
  $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-fsemantic-interposition>)

# Release builds name no directory of the machine that built them, so that the same sources give the
# same bytes anywhere. Debug builds keep whole paths: debuggers and gcov find the sources by them.
target_compile_options(zt_code INTERFACE
  $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=>
  $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${CMAKE_BINARY_DIR}=.>
  $<$<NOT:$<CONFIG:Debug>>:-ffile-prefix-map=${PROJECT_BINARY_DIR}/src=.>)  # where make compiles

# The library alone is measured. Atomic counters: tests run threads through it.
if(ZT_COVERAGE)
  target_compile_options(zt_code INTERFACE --coverage -fprofile-update=atomic)
endif()

# The sanitizers bring their own checked versions of what these two add.
if(NOT ZT_SANITIZE)
  target_compile_options(zt_code INTERFACE
    -fstack-clash-protection $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=3>)
endif()
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|amd64|AMD64)$")
  target_compile_options(zt_code INTERFACE -fcf-protection=full)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  # Atomics in line: GCC's out-of-line ones bring a constructor and objects without branch protection.
  target_compile_options(zt_code INTERFACE -mbranch-protection=standard -mno-outline-atomics)
endif()

set(ZT_LINK_OPTIONS
  -Wl,-z,relro,-z,now,-z,noexecstack,--as-needed
  $<$<NOT:$<BOOL:${ZT_COVERAGE}>>:-Wl,--version-script=${CMAKE_CURRENT_SOURCE_DIR}/abi/libzt_base.map>
  -Wl,--no-undefined-version)
# Nothing runs when the library is loaded or unloaded, so it does without the compiler's start files: they
# would add an initialiser and, without the marks of CET and BTI themselves, take those off the whole object.
if(NOT ZT_SANITIZE AND NOT ZT_COVERAGE)
  list(APPEND ZT_LINK_OPTIONS -nostartfiles)
endif()
# Clang links the sanitizer run times into programs, not into shared objects.
if(NOT (ZT_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang"))
  list(APPEND ZT_LINK_OPTIONS -Wl,-z,defs)
endif()
