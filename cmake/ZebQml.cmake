# zeb_qml(TARGET)
# Applies the project's compiler settings to a library with a QML module. Conversion and shadowing warnings
# are disabled for the code generated from QML.
function(zeb_qml target)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources INCLUDE REGEX "qmlcache")
  set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS "-Wno-shadow;-Wno-conversion")
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:zeb_compile_options>)
  target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
endfunction()
