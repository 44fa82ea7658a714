function(tollan_sanitize target)
  if(TOLLAN_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${TOLLAN_SANITIZE} -fno-omit-frame-pointer
                           -fno-sanitize-recover=all)
    target_link_options(${target} PRIVATE -fsanitize=${TOLLAN_SANITIZE})
  endif()
endfunction()
