# Flags and target shapes used in the whole tree.

# Warnings as errors; the two conversion warnings prove that single precision forms compute in single precision.
set(zent_warnings -Wall -Wextra -Wshadow -Wfloat-conversion -Wdouble-promotion -Werror)
if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
  list(APPEND zent_warnings -Wimplicit-float-conversion -Wno-implicit-int-float-conversion)
endif()

# Of the undefined behaviours those that the address sanitizer does not see: checks of every pointer for null and alignment beside it
# would double the time to compile.
if(ZENT_SANITIZE)
  set(zent_sanitizers address,signed-integer-overflow,shift,integer-divide-by-zero,float-cast-overflow,bounds,return,bool,enum)
  add_compile_options(-fsanitize=${zent_sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${zent_sanitizers})
endif()

# A layer of the library or the binding: no exceptions, no type information, no contraction of products and sums.
function(zent_library_layer target folder)
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  if(NOT sources)
    set(sources ${CMAKE_SOURCE_DIR}/cmake/empty.cpp)
  endif()
  add_library(${target} OBJECT ${sources})
  target_include_directories(${target} PUBLIC ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/include)
  target_compile_options(${target} PRIVATE ${zent_warnings} -fno-exceptions -fno-rtti -ffp-contract=off $<$<BOOL:${ZENT_SANITIZE}>:-O1>)
endfunction()

# The signal trap is under test, so the sanitizer must leave its signals to the library; frames that a jump passes over must stand
# on the real stack; and an allocation that is too large is answered with null, as the system does.
string(CONCAT zent_asan_options "handle_segv=0:handle_sigill=0:allow_user_segv_handler=1:"
  "detect_stack_use_after_return=0:allocator_may_return_null=1")

# tests/<family>/*.cpp make one test binary, registered with CTest as one test.
function(zent_test_family family)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/tests/${family}/*.cpp ${CMAKE_SOURCE_DIR}/tests/${family}/*.c)
  if(NOT sources)
    return()
  endif()
  add_executable(test_${family} ${sources})
  target_include_directories(test_${family} PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/include)
  target_compile_options(test_${family} PRIVATE -Wall -Wextra -Werror)
  target_compile_definitions(test_${family} PRIVATE ZENT_SOURCE_DIR="${CMAKE_SOURCE_DIR}" ZENT_BUILD_DIR="${CMAKE_BINARY_DIR}")
  target_link_libraries(test_${family} PRIVATE ${ARGN} GTest::gtest_main)
  add_dependencies(test_${family} catalogues)
  add_test(NAME ${family} COMMAND test_${family})
  set_tests_properties(${family} PROPERTIES TIMEOUT 600 ENVIRONMENT
    "ZENTERRPATH=${CMAKE_BINARY_DIR}/;ZENTSERRPATH=${CMAKE_BINARY_DIR}/;ASAN_OPTIONS=${zent_asan_options}")
endfunction()
