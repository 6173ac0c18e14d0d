# zeb_room(NAME SOURCES file... [USES target...] [PRIVATE_USES target...] [SEPARATE])
# Adds one room (top-level folder) as a static library with the project's compiler settings. SEPARATE: the
# sources use the same internal names, so they must not be compiled as one unit.
function(zeb_room name)
  cmake_parse_arguments(ROOM "SEPARATE" "" "SOURCES;USES;PRIVATE_USES" ${ARGN})
  add_library(${name} STATIC ${ROOM_SOURCES})
  target_link_libraries(${name}
    PUBLIC ${ROOM_USES}
    PRIVATE $<BUILD_INTERFACE:zeb_compile_options> ${ROOM_PRIVATE_USES})
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
  if(ZEB_JOIN_SOURCES AND NOT ROOM_SEPARATE)
    set_target_properties(${name} PROPERTIES UNITY_BUILD ON)
  endif()
endfunction()
