# The library headers that nearly every file reads, compiled once: the standard library's with the core,
# the test library's beside them with the tests' support. They save the compiler time and change no file:
# each still includes what it uses. The presets clang-core and web compile without them, and so does
# `make lint`, so that a forgotten include is found.
set(VEYLA_STANDARD_HEADERS
  <algorithm> <array> <chrono> <cmath> <cstdint> <filesystem> <functional> <map> <memory> <optional>
  <span> <stdexcept> <string> <string_view> <utility> <variant> <vector>)

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # A precompiled header serves only those that are compiled as it was, and GMime wants these.
  add_compile_options(-pthread -D_LARGEFILE64_SOURCE)
else()
  set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON)
endif()

# Gives every program and library of the folders that follow the headers that OWNER precompiles.
function(veyla_reuse_precompiled owner)
  foreach(folder IN LISTS ARGN)
    get_property(targets DIRECTORY ${PROJECT_SOURCE_DIR}/${folder} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
      get_target_property(type ${target} TYPE)
      if(type MATCHES "EXECUTABLE|STATIC_LIBRARY" AND NOT target STREQUAL owner)
        target_precompile_headers(${target} REUSE_FROM ${owner})
      endif()
    endforeach()
  endforeach()
endfunction()
