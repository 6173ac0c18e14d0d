# zeb_qml(TARGET)
# The house's compiler settings for a library that holds a QML module. What Qt compiles from QML converts and shadows as
# it likes.
function(zeb_qml target)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "qmlcache")
  set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS "-Wno-shadow;-Wno-conversion")
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:zeb_compile_options>)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
endfunction()
