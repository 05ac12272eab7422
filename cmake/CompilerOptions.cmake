# Warnings, Qt's strictness defines and the sanitizer switch, applied to every
# target of the project through orvane_options.
add_library(orvane_options INTERFACE)
target_compile_options(orvane_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wold-style-cast -Wcast-qual -Wundef
  -Wnon-virtual-dtor -Woverloaded-virtual)
if(ORVANE_WERROR)
  target_compile_options(orvane_options INTERFACE -Werror)
endif()
target_compile_definitions(orvane_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_FOREACH
  QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(ORVANE_SANITIZE)
  set(_orvane_san -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(orvane_options INTERFACE ${_orvane_san})
  target_link_options(orvane_options INTERFACE ${_orvane_san})
endif()
