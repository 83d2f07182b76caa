# The core: everything that the system decides, with nothing but the standard library.
file(GLOB VEYLA_CORE_SOURCES CONFIGURE_DEPENDS
  acquisition/*.cpp analysis/*.cpp measuring/*.cpp history/*.cpp shell/*.cpp platform/*.cpp)
file(GLOB VEYLA_CORE_HEADERS CONFIGURE_DEPENDS
  acquisition/*.h analysis/*.h measuring/*.h history/*.h shell/*.h platform/*.h)

add_library(veyla_core STATIC ${VEYLA_CORE_SOURCES})
add_library(Veyla::core ALIAS veyla_core)
target_compile_features(veyla_core PUBLIC cxx_std_20)
# Whoever uses the installed library compiles by its own rules.
target_link_libraries(veyla_core PUBLIC $<BUILD_INTERFACE:veyla_warnings>)
target_precompile_headers(veyla_core PRIVATE ${VEYLA_STANDARD_HEADERS})

# System headers of libraries lie where the compiler finds them unasked, so the include lines
# themselves are checked: the build stops at one that the core must not have.
set(stamp ${PROJECT_BINARY_DIR}/core_includes.stamp)
add_custom_command(OUTPUT ${stamp}
  COMMAND ${CMAKE_COMMAND} -DSTAMP=${stamp} -DROOT=${PROJECT_SOURCE_DIR}
          -P ${PROJECT_SOURCE_DIR}/cmake/check_core_includes.cmake
  DEPENDS ${VEYLA_CORE_SOURCES} ${VEYLA_CORE_HEADERS} cmake/check_core_includes.cmake
  COMMENT "Checking what the core includes")
add_custom_target(veyla_core_includes DEPENDS ${stamp})
add_dependencies(veyla_core veyla_core_includes)
