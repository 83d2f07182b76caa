# Fails when a file of the core includes anything but the standard library and the core itself.
cmake_minimum_required(VERSION 3.25)
set(standard
  algorithm any array atomic bit cassert cctype cfloat charconv chrono climits cmath compare complex
  concepts cstdarg cstddef cstdint cstdio cstdlib cstring ctime deque exception functional
  initializer_list iomanip ios iosfwd iterator limits list map memory mutex numbers numeric optional
  ostream random ratio set span sstream stdexcept string string_view tuple type_traits typeindex
  typeinfo unordered_map unordered_set utility variant vector)

file(GLOB files
  ${ROOT}/acquisition/*.h ${ROOT}/acquisition/*.cpp ${ROOT}/analysis/*.h ${ROOT}/analysis/*.cpp
  ${ROOT}/measuring/*.h ${ROOT}/measuring/*.cpp ${ROOT}/history/*.h ${ROOT}/history/*.cpp
  ${ROOT}/shell/*.h ${ROOT}/shell/*.cpp ${ROOT}/platform/*.h ${ROOT}/platform/*.cpp)
foreach(file IN LISTS files)
  file(RELATIVE_PATH name ${ROOT} ${file})
  file(STRINGS ${file} lines REGEX "^[ \t]*#[ \t]*include")
  foreach(line IN LISTS lines)
    if(line MATCHES "<([^>]+)>")
      if(NOT CMAKE_MATCH_1 IN_LIST standard)
        message(FATAL_ERROR "${name} includes <${CMAKE_MATCH_1}>: the core has the C++ standard library alone")
      endif()
    elseif(line MATCHES "\"([^\"]+)\"")
      set(included ${CMAKE_MATCH_1})
      if(NOT included MATCHES "^(acquisition|analysis|measuring|history|shell|platform)/[^/]+\\.h$")
        message(FATAL_ERROR "${name} includes \"${included}\": the core has its own folders and the platform's interfaces alone")
      endif()
      if(name MATCHES "^platform/" AND NOT included MATCHES "^platform/")
        message(FATAL_ERROR "${name} includes \"${included}\": the platform's interfaces know nothing of the core")
      endif()
    else()
      message(FATAL_ERROR "${name} has an include line that cannot be checked: ${line}")
    endif()
  endforeach()
endforeach()
file(TOUCH ${STAMP})
