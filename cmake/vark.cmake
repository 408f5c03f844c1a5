# What every target of this project has in common.

add_library(vark_warnings INTERFACE)
# In sources that are compiled together a local of one may have the name of a constant of another.
target_compile_options(vark_warnings INTERFACE -Wall -Wextra -Wconversion
                       $<$<NOT:$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>>:-Wshadow> -Werror)
# GCC 12 sees overlapping copies in every optimised "text" + std::string; later ones do not. clang-tidy reads
# the same flags and knows other warnings.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(vark_warnings INTERFACE -Wno-restrict -Wno-unknown-warning-option)
endif()

# What the sanitizers add to the code makes GCC see values without a beginning where there are none.
if(VARK_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(vark_warnings INTERFACE -Wno-maybe-uninitialized)
endif()

# The library and its parts never throw and never ask for a type at run time; they stay in memory once
# loaded, since destructors of thread slots run after a host's dlclose. On Windows they bring the compiler's own
# libraries with them.
add_library(vark_part INTERFACE)
target_link_libraries(vark_part INTERFACE vark_warnings)
target_compile_options(vark_part INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti>)
if(WIN32)
  target_link_options(vark_part INTERFACE $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>:-static>)
else()
  target_link_options(vark_part INTERFACE -Wl,-z,nodelete -Wl,-z,relro -Wl,-z,now)
endif()

if(VARK_SANITIZE)
  add_compile_options(-fsanitize=${VARK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer -g)
  add_link_options(-fsanitize=${VARK_SANITIZE})
endif()

# What makes a build from scratch short, where nothing but that counts. In the build of the tests each source is compiled
# by itself: what one needs is seen there, and kept builds are found again.
#
# vark_precompiled_headers(target <header> …) has headers read once for the target; REUSE_FROM other, in place of headers,
# shares those of a target with the same flags.
function(vark_precompiled_headers target)
  if(NOT CMAKE_BUILD_TYPE STREQUAL Release OR WIN32)
    return()
  endif()
  # With them GCC 12 sees "text" + std::string leave its bounds; the build of the tests has these warnings.
  target_compile_options(${target} PRIVATE -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread)
  if(ARGV1 STREQUAL REUSE_FROM)
    target_precompile_headers(${target} ${ARGN})
    # A program that shares them with a library is compiled as what a library holds.
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(${target} PRIVATE -fPIC)
  else()
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()
# vark_joined_sources(target [EXCEPT source …]) has its sources compiled sixteen at a time: the headers that they all read
# and what they make of the same templates are most of the work. Names of two sources' unnamed namespaces have to differ
# for it.
function(vark_joined_sources target)
  if(NOT CMAKE_BUILD_TYPE STREQUAL Release OR WIN32)
    return()
  endif()
  cmake_parse_arguments(arg "" "" "EXCEPT" ${ARGN})
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 16)
  if(arg_EXCEPT)
    set_source_files_properties(${arg_EXCEPT} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
  endif()
endfunction()

# A shared part under the name that the library looks for: vark_shared_part(wbtrv32 SOURCES … [ALIKE …] LIBRARIES …)
# builds libwbtrv32.so from an object library of the name wbtrv32_objects, which tests may link as well. ALIKE names those
# of the sources whose functions have the same names.
function(vark_shared_part name)
  cmake_parse_arguments(arg "" "" "SOURCES;ALIKE;LIBRARIES" ${ARGN})
  add_library(${name}_objects OBJECT ${arg_SOURCES})
  target_link_libraries(${name}_objects PRIVATE vark_part PUBLIC ${arg_LIBRARIES})
  vark_joined_sources(${name}_objects EXCEPT ${arg_ALIKE})
  add_library(${name} SHARED)
  target_link_libraries(${name} PRIVATE vark_part ${name}_objects)
endfunction()

# vark_windows_library(target NAME EXPORT …) gives the shared part `target` the name, undecorated exports and the import
# library lib<target>.a that hosts of Windows expect.
function(vark_windows_library target name)
  list(JOIN ARGN "\n  " exports)
  set(exports_list ${CMAKE_CURRENT_BINARY_DIR}/${target}.def)
  file(CONFIGURE OUTPUT ${exports_list} CONTENT "LIBRARY ${name}.dll\nEXPORTS\n  ${exports}\n")
  target_sources(${target} PRIVATE ${exports_list})
  set_target_properties(${target} PROPERTIES PREFIX "" OUTPUT_NAME ${name} IMPORT_PREFIX lib IMPORT_SUFFIX .a
                                             ARCHIVE_OUTPUT_NAME ${target})
  target_link_options(${target} PRIVATE -Wl,--enable-stdcall-fixup)
  # What the linker writes has undecorated names only; a host's compiler asks for those with the number of bytes of
  # their arguments.
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    add_custom_command(TARGET ${target} POST_BUILD VERBATIM
      COMMAND ${CMAKE_SOURCE_DIR}/cmake/import_library ${CMAKE_NM} ${CMAKE_DLLTOOL} $<TARGET_FILE:${target}>
              $<TARGET_LINKER_FILE:${target}> ${ARGN})
  endif()
endfunction()

# A test program of GoogleTest cases: vark_test(values SOURCES … LIBRARIES … [LINUX …] [WRAPS function …] [LABELS …]
# [TIMEOUT seconds] [FIXTURES …] [BESIDE program] [TOGETHER]).
# LINUX names sources whose cases need what is not there on Windows: forks, signals, our own report engine and tools.
# Calls of a function of WRAPS lead to the test's __wrap_function, which finds the function itself as __real_function.
# Each case is run in a process of its own, since the library's state is final for the life of a process; with BESIDE
# all of them in one, which that program starts. With TOGETHER, for cases that need no state, they are in one on Windows,
# where a process takes longer to begin than they take to run.
function(vark_test name)
  cmake_parse_arguments(arg "TOGETHER" "TIMEOUT;BESIDE" "SOURCES;LINUX;LIBRARIES;WRAPS;LABELS;FIXTURES" ${ARGN})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
    if(WIN32)
      set(arg_TIMEOUT 600) # Wine's programs wait for its server at each turn, and others may have theirs first
    endif()
  endif()
  if(NOT WIN32)
    list(APPEND arg_SOURCES ${arg_LINUX})
  endif()
  add_executable(test_${name} ${arg_SOURCES})
  foreach(function ${arg_WRAPS})
    if(WIN32)
      target_sources(test_${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests/support/windows/wraps/${function}.cpp)
    else()
      target_link_options(test_${name} PRIVATE -Wl,--wrap=${function})
    endif()
  endforeach()
  target_link_libraries(test_${name} PRIVATE vark_warnings GTest::gtest_main ${arg_LIBRARIES})
  if(WIN32)
    if(TARGET vark_test_support)
      target_precompile_headers(test_${name} REUSE_FROM vark_test_support)
    endif()
    # GCC 12 sees texts copied beyond their end in optimised std::string + "text"; later ones do not.
    target_compile_options(test_${name} PRIVATE -Wno-array-bounds -Wno-stringop-overflow)
    add_dependencies(windows_suites test_${name})
  endif()
  if(WIN32 AND arg_TOGETHER)
    add_test(NAME ${name} COMMAND test_${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT})
    return()
  endif()
  if(arg_BESIDE)
    add_test(NAME ${name} COMMAND ${arg_BESIDE} $<TARGET_FILE:test_${name}>)
    set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT})
    return()
  endif()
  if(arg_FIXTURES)
    set(fixtures FIXTURES_REQUIRED ${arg_FIXTURES})
  endif()
  gtest_discover_tests(test_${name} TEST_PREFIX ${name}. DISCOVERY_MODE PRE_TEST
                       PROPERTIES TIMEOUT ${arg_TIMEOUT}
                       ENVIRONMENT "TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/thread_sanitizer.supp"
                       ${fixtures} LABELS "${arg_LABELS}")
endfunction()
