# cmake -DSRC=<.cache/preview-assets/PreviewAsset> -DDST=<share/orvo> -P CopyPreviewAssets.cmake
# Puts the installed script libraries beside the shipped preview files;
# file(COPY) only copies what changed, so a build with nothing new costs a
# walk over the folder.
if(NOT EXISTS ${SRC}/MathJax/MathJax.js)
  message(WARNING "The preview's script libraries are not installed (${SRC}); run scripts/install-preview-assets. "
                  "Math, diagrams and code colouring stay unrendered until then.")
  return()
endif()
file(COPY ${SRC} DESTINATION ${DST})
