# Small helpers shared by every folder's CMakeLists.txt.

# Warnings for our own code (never for generated or third-party sources).
function(orvo_target_defaults target)
  target_compile_options(${target} PRIVATE -Wall -Wextra)
  if(ORVO_WERROR)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
endfunction()

# A subsystem library: orvo_add_library(<name> SOURCES ... [PUBLIC_LIBS ...] [PRIVATE_LIBS ...])
# The target is called orvo_<name>; its headers are included as <name/Header.h>.
function(orvo_add_library name)
  cmake_parse_arguments(A "" "" "SOURCES;PUBLIC_LIBS;PRIVATE_LIBS" ${ARGN})
  add_library(orvo_${name} STATIC ${A_SOURCES})
  target_include_directories(orvo_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(orvo_${name} PUBLIC ${A_PUBLIC_LIBS} PRIVATE ${A_PRIVATE_LIBS})
  orvo_target_defaults(orvo_${name})
endfunction()

# A subsystem library made of every .cpp under its folder (subfolders too),
# for folders that several people add files to:
#   orvo_add_glob_library(<name> [PUBLIC_LIBS ...] [PRIVATE_LIBS ...] [AUTOMOC])
# Does nothing while the folder holds no source yet.
function(orvo_add_glob_library name)
  cmake_parse_arguments(A "AUTOMOC" "" "PUBLIC_LIBS;PRIVATE_LIBS" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.c)
  if(NOT sources)
    return()
  endif()
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  orvo_add_library(${name} SOURCES ${sources} ${headers} PUBLIC_LIBS ${A_PUBLIC_LIBS} PRIVATE_LIBS ${A_PRIVATE_LIBS})
  if(A_AUTOMOC)
    set_target_properties(orvo_${name} PROPERTIES AUTOMOC ON)
    # When the set of files changes (the glob re-runs CMake), moc must look at
    # the new headers; its Ninja rule only notices changes to files it has
    # already seen, so drop its time stamp to make it run again.
    string(MD5 file_set "${sources};${headers}")
    set(stamp ${CMAKE_CURRENT_BINARY_DIR}/orvo_${name}_fileset.md5)
    if(EXISTS ${stamp})
      file(READ ${stamp} previous)
    else()
      set(previous "")
    endif()
    if(NOT previous STREQUAL file_set)
      file(REMOVE ${CMAKE_CURRENT_BINARY_DIR}/orvo_${name}_autogen/timestamp)
      file(WRITE ${stamp} "${file_set}")
    endif()
  endif()
endfunction()

# Environment every test process gets. Tests also point the XDG folders at a
# temporary directory of their own (tests/support does that for gtest mains).
set(ORVO_TEST_ENV
  "QT_QPA_PLATFORM=offscreen"
  "QTWEBENGINE_DISABLE_SANDBOX=1"
  "QTWEBENGINE_CHROMIUM_FLAGS=--no-sandbox --disable-gpu"
  "ORVO_SOURCE_DIR=${CMAKE_SOURCE_DIR}"
  "ORVO_TEST_DATA_DIR=${CMAKE_SOURCE_DIR}/tests/data"
  "ORVO_CORPUS_DIR=${ORVO_CORPUS_DIR}"
  "ORVO_BIN_DIR=${CMAKE_BINARY_DIR}/bin"
  "ORVO_RESOURCES_DIR=${CMAKE_BINARY_DIR}/share/orvo"
)

# orvo_add_test(<name> SOURCES ... [LIBS ...] [LABELS unit|e2e|gui|net ...]
#               [SANITIZE] [GUI] [TIMEOUT seconds])
# One ctest entry per test binary. SANITIZE marks tests that also run in the
# sanitizer build; in that build every other test is skipped. GUI tests get a
# main that makes a QApplication (offscreen) and are skipped when the GUI is
# not built.
function(orvo_add_test name)
  cmake_parse_arguments(A "SANITIZE;GUI" "TIMEOUT" "SOURCES;LIBS;LABELS" ${ARGN})
  if(ORVO_SANITIZE AND NOT A_SANITIZE)
    return()
  endif()
  if(A_GUI AND NOT ORVO_GUI)
    return()
  endif()
  add_executable(${name} ${A_SOURCES})
  if(A_GUI)
    set(support orvo_test_support_gui)
  else()
    set(support orvo_test_support)
  endif()
  target_link_libraries(${name} PRIVATE ${A_LIBS} ${support} GTest::gtest GTest::gmock)
  orvo_target_defaults(${name})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
  add_test(NAME ${name} COMMAND ${name})
  if(NOT A_LABELS)
    set(A_LABELS unit)
  endif()
  if(NOT A_TIMEOUT)
    set(A_TIMEOUT 300)
  endif()
  set_tests_properties(${name} PROPERTIES LABELS "${A_LABELS}" TIMEOUT ${A_TIMEOUT}
                       ENVIRONMENT "${ORVO_TEST_ENV}")
  if(TARGET orvo_all_tests)
    add_dependencies(orvo_all_tests ${name})
  endif()
endfunction()

# orvo_add_bench(<name> SOURCES ... [LIBS ...]): a Google Benchmark binary in build/bench.
function(orvo_add_bench name)
  cmake_parse_arguments(A "" "" "SOURCES;LIBS" ${ARGN})
  find_package(benchmark REQUIRED)
  add_executable(${name} ${A_SOURCES})
  target_link_libraries(${name} PRIVATE ${A_LIBS} benchmark::benchmark)
  orvo_target_defaults(${name})
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bench)
endfunction()

# orvo_add_fuzzer(<name> SOURCES ... [LIBS ...] [CORPUS dir]): a libFuzzer target in build/fuzz.
function(orvo_add_fuzzer name)
  cmake_parse_arguments(A "" "CORPUS" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${A_SOURCES})
  target_link_libraries(${name} PRIVATE ${A_LIBS})
  target_compile_options(${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/fuzz)
endfunction()
