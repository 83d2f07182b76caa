# What `cmake --install` brings: the program with what belongs to it, and, as the component "library", the core for
# others' programs, which `find_package(Veyla)` finds. That needs nothing but the standard library.
include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

install(TARGETS veyla RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT program)
install(TARGETS veyla_video_module veyla_pictures_module veyla_mail_module
        LIBRARY DESTINATION lib/veyla COMPONENT program)
install(FILES ${PROJECT_BINARY_DIR}/apps/cli/veyla.1
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT program)
install(FILES ${PROJECT_BINARY_DIR}/apps/cli/veyla.bash
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT program RENAME veyla)
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licence)

# Beside the core the bindings that need no machine: settings and texts, JSON, the transform, a recording's time,
# and a camera for one's own frames.
set(bindings veyla_resources veyla_json veyla_kiss_real_fft veyla_time veyla_camera)
foreach(library veyla_core ${bindings})
  string(REPLACE veyla_ "" name ${library})
  set_target_properties(${library} PROPERTIES EXPORT_NAME ${name})
endforeach()
add_library(veyla_portable INTERFACE)
target_link_libraries(veyla_portable INTERFACE ${bindings})
set_target_properties(veyla_portable PROPERTIES EXPORT_NAME portable)
add_library(Veyla::portable ALIAS veyla_portable)

set(headers ${CMAKE_INSTALL_INCLUDEDIR}/veyla)
install(TARGETS veyla_core veyla_portable ${bindings} EXPORT VeylaTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
        INCLUDES DESTINATION ${headers})
foreach(header IN LISTS VEYLA_CORE_HEADERS)
  file(RELATIVE_PATH name ${PROJECT_SOURCE_DIR} ${header})
  get_filename_component(folder ${name} DIRECTORY)
  install(FILES ${header} DESTINATION ${headers}/${folder} COMPONENT library)
endforeach()
foreach(header portable/embedded_resources portable/json portable/kiss_real_fft linux/bgra_frame
        linux/memory_key_value_store linux/recording_camera linux/recording_source linux/timed_queue linux/wall_clock)
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES platform/${header}.h DESTINATION ${headers}/platform/${folder} COMPONENT library)
endforeach()

set(package ${CMAKE_INSTALL_LIBDIR}/cmake/Veyla)
install(EXPORT VeylaTargets NAMESPACE Veyla:: FILE VeylaConfig.cmake DESTINATION ${package} COMPONENT library)
# Before version 1 any minor version may break what uses it.
write_basic_package_version_file(${PROJECT_BINARY_DIR}/VeylaConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/VeylaConfigVersion.cmake DESTINATION ${package} COMPONENT library)
