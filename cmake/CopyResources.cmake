# cmake -DSRC=<resources> -DDST=<share/orvo> -P CopyResources.cmake
file(GLOB entries RELATIVE ${SRC} ${SRC}/*)
list(REMOVE_ITEM entries CMakeLists.txt)
foreach(e IN LISTS entries)
  file(COPY ${SRC}/${e} DESTINATION ${DST})
endforeach()
