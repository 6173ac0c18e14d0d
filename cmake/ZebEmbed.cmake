set(ZEB_EMBED_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/EmbedText.cmake)

# zeb_embed_text(TARGET FILE FUNCTION)
# Compiles the bytes of FILE into TARGET; zeb::embedded::FUNCTION() returns them as a std::string_view.
function(zeb_embed_text target file function)
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${function}.cpp)
  add_custom_command(
    OUTPUT ${source}
    COMMAND ${CMAKE_COMMAND} -DINPUT=${file} -DOUTPUT=${source} -DFUNCTION=${function} -P ${ZEB_EMBED_SCRIPT}
    DEPENDS ${file} ${ZEB_EMBED_SCRIPT}
    COMMENT "Embedding ${file}"
    VERBATIM)
  target_sources(${target} PRIVATE ${source})
endfunction()
