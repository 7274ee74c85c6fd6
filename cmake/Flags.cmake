# Compiler flags shared by every configuration.
add_compile_options(-Wall -Wextra)
if(TUSKEL_WERROR)
  add_compile_options(-Werror)
endif()
if(TUSKEL_SANITIZE)
  add_compile_options(-fsanitize=${TUSKEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TUSKEL_SANITIZE})
endif()
