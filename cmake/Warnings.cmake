# Warnings are errors, everywhere, on both compilers we ship with.
function(tollan_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Werror -Wformat=2 -Wshadow -Wcast-align
    -Wno-missing-field-initializers
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Wold-style-cast>)
endfunction()
