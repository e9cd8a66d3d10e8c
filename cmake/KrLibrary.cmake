# Building, installing and packaging the libraries of this tree. Included by
# the top-level CMakeLists.txt and by each platform library's own, which also
# builds on its own (cmake -S platform/zu) so that it can be installed apart.
include_guard(GLOBAL)

include(GNUInstallDirs)
include(GenerateExportHeader)
include(CMakePackageConfigHelpers)

# Shared libraries unless BUILD_SHARED_LIBS says otherwise; in a parent
# project, the parent's BUILD_SHARED_LIBS decides (static when it is unset).
if(PROJECT_IS_TOP_LEVEL)
  option(BUILD_SHARED_LIBS "Build shared libraries" ON)
endif()

# Shared libraries export only what their headers mark as public API; static
# ones are position independent so that they can go into a shared library.
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

if(NOT DEFINED KRVALUEUTILS_INSTALL)
  set(KRVALUEUTILS_INSTALL ON)
endif()

set(KR_LIBRARY_DIR ${CMAKE_CURRENT_LIST_DIR})

# Compiler warnings for every target of this tree. KRVALUEUTILS_EXTRA_WARNINGS
# adds the conversion, float promotion and destructor warnings, of which the
# tree is clean with g++ and clang++; the test command builds with them.
function(kr_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
  if(KRVALUEUTILS_EXTRA_WARNINGS)
    target_compile_options(${target} PRIVATE -Wconversion -Wdouble-promotion -Wnon-virtual-dtor)
  endif()
  if(KRVALUEUTILS_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# kr_link(<target> <library> ...): links this project's libraries by their
# short names (zu, krvalue, krmath, krvaluetext, krvalueutils); other names
# are linked as they are.
function(kr_link target)
  set(libraries)
  foreach(library IN LISTS ARGN)
    if(library MATCHES "^(zu|krvalue|krmath)$")
      list(APPEND libraries ${library}::${library})
    elseif(library MATCHES "^(krvaluetext|krvalueutils)$")
      list(APPEND libraries krvalueutils::${library})
    else()
      list(APPEND libraries ${library})
    endif()
  endforeach()
  target_link_libraries(${target} PRIVATE ${libraries})
endfunction()

# kr_library(<name> EXPORT_HEADER <file> EXPORT_MACRO <MACRO> SOURCES ...):
# the library lib<name>, shared or static after BUILD_SHARED_LIBS, as the
# target krvalueutils_<name> (krvalueutils for the library itself), usable as
# <package>::<name> where <package> is the current project. Versioned SONAME,
# a generated export header, C++17 required of every user, its include/
# directory installed as it is, and a pkg-config module <name>.
function(kr_library name)
  cmake_parse_arguments(ARG "" "EXPORT_HEADER;EXPORT_MACRO" "SOURCES" ${ARGN})
  kr_target_name(target ${name})
  add_library(${target} ${ARG_SOURCES})
  add_library(${PROJECT_NAME}::${name} ALIAS ${target})
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ${name}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    EXPORT_NAME ${name})
  target_compile_features(${target} PUBLIC cxx_std_17)
  generate_export_header(${target}
    BASE_NAME ${ARG_EXPORT_MACRO}
    EXPORT_MACRO_NAME ${ARG_EXPORT_MACRO}_API
    EXPORT_FILE_NAME ${CMAKE_CURRENT_BINARY_DIR}/include/${ARG_EXPORT_HEADER})
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "STATIC_LIBRARY")
    target_compile_definitions(${target} PUBLIC ${ARG_EXPORT_MACRO}_STATIC_DEFINE)
  endif()
  target_include_directories(${target} PUBLIC
    $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>
    $<BUILD_INTERFACE:${CMAKE_CURRENT_BINARY_DIR}/include>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  kr_warnings(${target})
  target_compile_options(${target} PRIVATE ${KR_COVERAGE_OPTIONS} ${KRVALUEUTILS_LIBRARY_OPTIONS})
  if(NOT KRVALUEUTILS_INSTALL)
    return()
  endif()
  install(TARGETS ${target} EXPORT ${PROJECT_NAME}Targets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  get_filename_component(export_dir ${ARG_EXPORT_HEADER} DIRECTORY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/include/${ARG_EXPORT_HEADER}
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/${export_dir})
endfunction()

# The target name of the library <name>: prefixed, so that a parent project
# that adds this tree keeps its own names free.
function(kr_target_name out name)
  if(name STREQUAL "krvalueutils")
    set(${out} krvalueutils PARENT_SCOPE)
  else()
    set(${out} krvalueutils_${name} PARENT_SCOPE)
  endif()
endfunction()

# kr_pkg_config(<name> DESCRIPTION <text> [REQUIRES <module> ...]): installs
# <name>.pc for the library <name>; REQUIRES names the pkg-config modules of
# the libraries it uses in its headers. The file finds its prefix from its own
# place, so an installed tree can be moved.
function(kr_pkg_config name)
  cmake_parse_arguments(ARG "" "DESCRIPTION" "REQUIRES" ${ARGN})
  if(NOT KRVALUEUTILS_INSTALL)
    return()
  endif()
  kr_target_name(target ${name})
  set(PC_NAME ${name})
  set(PC_DESCRIPTION "${ARG_DESCRIPTION}")
  set(PC_VERSION ${PROJECT_VERSION})
  string(REPLACE ";" " " PC_REQUIRES "${ARG_REQUIRES}")
  set(PC_CFLAGS "")
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "STATIC_LIBRARY")
    get_target_property(definitions ${target} INTERFACE_COMPILE_DEFINITIONS)
    foreach(definition IN LISTS definitions)
      string(APPEND PC_CFLAGS " -D${definition}")
    endforeach()
  endif()
  file(RELATIVE_PATH PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
  string(REGEX REPLACE "/$" "" PC_PREFIX "${PC_PREFIX}")
  set(PC_LIBDIR ${CMAKE_INSTALL_LIBDIR})
  set(PC_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
  configure_file(${KR_LIBRARY_DIR}/library.pc.in ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

# kr_package([DEPENDENCIES "<package> <version>" ...]): installs the current
# project's libraries as the CMake package <project>: find_package(<project>
# CONFIG) gives the targets <project>::<name>, after finding the packages
# their headers use.
function(kr_package)
  cmake_parse_arguments(ARG "" "" "DEPENDENCIES" ${ARGN})
  if(NOT KRVALUEUTILS_INSTALL)
    return()
  endif()
  set(PACKAGE_DEPENDENCIES "")
  foreach(dependency IN LISTS ARG_DEPENDENCIES)
    string(APPEND PACKAGE_DEPENDENCIES "find_dependency(${dependency})\n")
  endforeach()
  set(dir ${CMAKE_INSTALL_LIBDIR}/cmake/${PROJECT_NAME})
  install(EXPORT ${PROJECT_NAME}Targets NAMESPACE ${PROJECT_NAME}:: DESTINATION ${dir})
  configure_package_config_file(${KR_LIBRARY_DIR}/packageConfig.cmake.in
    ${CMAKE_CURRENT_BINARY_DIR}/${PROJECT_NAME}Config.cmake
    INSTALL_DESTINATION ${dir})
  write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/${PROJECT_NAME}ConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
  install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/${PROJECT_NAME}Config.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/${PROJECT_NAME}ConfigVersion.cmake
    DESTINATION ${dir})
endfunction()
