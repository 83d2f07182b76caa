# The files under resources/ become part of the programs: a table of names and contents, so that a
# program needs no folder beside it.
file(GLOB VEYLA_RESOURCES CONFIGURE_DEPENDS resources/*.json)
set(embedded ${PROJECT_BINARY_DIR}/embedded_resources.cpp)
add_custom_command(OUTPUT ${embedded}
  COMMAND ${CMAKE_COMMAND} -DOUTPUT=${embedded} "-DFILES=${VEYLA_RESOURCES}"
          -P ${PROJECT_SOURCE_DIR}/cmake/embed_resources.cmake
  DEPENDS ${VEYLA_RESOURCES} cmake/embed_resources.cmake
  COMMENT "Embedding resources"
  VERBATIM)
add_library(veyla_resources STATIC ${embedded})
target_link_libraries(veyla_resources PUBLIC veyla_core)
