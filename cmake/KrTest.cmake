# The GoogleTest suites of this tree: included by tests/ and by each platform
# library's tests/, after finding GTest, so that a platform library built on
# its own (cmake -S platform/krmath) runs its suites with ctest too.
include_guard(GLOBAL)
include(${CMAKE_CURRENT_LIST_DIR}/KrLibrary.cmake)

# kr_test(<name> SOURCES ... LIBS ...): one GoogleTest executable <name>, the
# target krvalueutils_<name>, and one ctest entry <name>.
function(kr_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  set(target krvalueutils_${name})
  add_executable(${target} ${ARG_SOURCES})
  set_target_properties(${target} PROPERTIES OUTPUT_NAME ${name})
  kr_link(${target} ${ARG_LIBS} GTest::gtest GTest::gtest_main)
  kr_warnings(${target})
  add_test(NAME ${name} COMMAND ${target})
endfunction()
