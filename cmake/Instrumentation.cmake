# Sanitizers and coverage apply to every target alike, so that a fault in any layer is seen.
if(TAVI_SANITIZE)
  add_compile_options(-fsanitize=${TAVI_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TAVI_SANITIZE})
endif()
if(TAVI_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
