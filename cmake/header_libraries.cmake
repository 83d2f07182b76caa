# The libraries that are headers alone, for machine and browser alike. A compiler for another machine
# must not see the folder in which this one's headers lie, so that it gets a folder with theirs alone.
add_library(veyla_header_libraries INTERFACE)
if(EMSCRIPTEN)
  set(folder ${PROJECT_BINARY_DIR}/header_libraries)
  file(MAKE_DIRECTORY ${folder})
  foreach(header nlohmann/json.hpp kissfft/kissfft.hh)
    find_path(found_${header} ${header} PATHS /usr/include /usr/local/include
              NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    get_filename_component(library ${header} DIRECTORY)
    file(CREATE_LINK ${found_${header}}/${library} ${folder}/${library} SYMBOLIC)
  endforeach()
  target_include_directories(veyla_header_libraries SYSTEM INTERFACE ${folder})
endif()
