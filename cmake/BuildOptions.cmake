# One place for what every target is compiled with.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/lib)
set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

add_library(tavrelin_warnings INTERFACE)
target_compile_options(tavrelin_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
target_include_directories(tavrelin_warnings INTERFACE ${CMAKE_SOURCE_DIR})

# What product and tests share: 64-bit file offsets and times (the board is 32-bit, the register page lies
# above 2 GiB and the instrument outlives January 2038). The simulated board does without: it defines both
# kinds of every C library symbol.
add_library(tavrelin_options INTERFACE)
target_compile_definitions(tavrelin_options INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
target_link_libraries(tavrelin_options INTERFACE tavrelin_warnings)

# Sanitizers and coverage watch the product. Tests and simulated board are only linked with their libraries,
# so that their objects are the same under every preset; TAVRELIN_SANITIZE_ALL watches these, too.
add_library(tavrelin_instrumented INTERFACE)
if(TAVRELIN_SANITIZE)
  target_compile_options(tavrelin_instrumented INTERFACE
    -fsanitize=${TAVRELIN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tavrelin_options INTERFACE -fsanitize=${TAVRELIN_SANITIZE})
endif()
add_library(tavrelin_watched INTERFACE)
if(TAVRELIN_SANITIZE AND TAVRELIN_SANITIZE_ALL)
  target_compile_options(tavrelin_watched INTERFACE
    -fsanitize=${TAVRELIN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(tavrelin_watched INTERFACE -fsanitize=${TAVRELIN_SANITIZE})
endif()
if(TAVRELIN_COVERAGE)
  target_compile_options(tavrelin_instrumented INTERFACE --coverage)
  target_link_options(tavrelin_options INTERFACE --coverage)
endif()

# What ships is hardened, and tested so: address space at random, no writing to what the linker has resolved,
# checked buffers and stacks. Sanitizers and gcov want the plain code.
if(NOT TAVRELIN_SANITIZE AND NOT TAVRELIN_COVERAGE)
  target_compile_options(tavrelin_instrumented INTERFACE
    -fPIE -fstack-protector-strong $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
  target_link_options(tavrelin_instrumented INTERFACE -pie LINKER:-z,relro,-z,now)
endif()

# tavrelin_program(NAME SOURCES ... DEPENDS ... LIMIT BYTES): a program that ships; the build tells its size and
# the libraries that it needs, and fails when it is larger.
function(tavrelin_program name)
  cmake_parse_arguments(PROGRAM "" "LIMIT" "SOURCES;DEPENDS" ${ARGN})
  add_executable(${name} ${PROGRAM_SOURCES})
  target_link_libraries(${name} PRIVATE ${PROGRAM_DEPENDS} tavrelin_instrumented)
  install(TARGETS ${name})
  if(NOT TAVRELIN_SANITIZE AND NOT TAVRELIN_COVERAGE)
    add_custom_command(TARGET ${name} POST_BUILD VERBATIM COMMAND ${CMAKE_COMMAND}
      -DPROGRAM=$<TARGET_FILE:${name}> -DSTRIP=${CMAKE_STRIP} -DOBJDUMP=${CMAKE_OBJDUMP}
      $<$<NOT:$<CONFIG:Debug>>:-DLIMIT=${PROGRAM_LIMIT}>
      -P ${CMAKE_SOURCE_DIR}/cmake/Footprint.cmake)
  endif()
endfunction()

# tavrelin_layer(NAME SOURCES ... DEPENDS ...): one layer of the product. A layer sees the headers of the
# layers below it and of no other, because it links only those.
function(tavrelin_layer name)
  cmake_parse_arguments(LAYER "" "" "SOURCES;DEPENDS" ${ARGN})
  add_library(tavrelin_${name} STATIC ${LAYER_SOURCES})
  target_link_libraries(tavrelin_${name} PUBLIC tavrelin_options ${LAYER_DEPENDS}
    PRIVATE tavrelin_instrumented)
endfunction()
