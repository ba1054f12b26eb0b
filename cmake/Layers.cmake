# One layer of the build: a folder's sources compile as their own object
# target that sees only the headers it may use: those of its own folder and
# of the layers below it, staged as links in the build tree. An include that
# points up a layer names a header the compiler cannot find, so the build
# fails at once. The shared libraries are made of these objects.
#
#   fxgraph_layer(<target> SOURCES <files...> SEES <paths from the source root...>)
function(fxgraph_layer target)
  cmake_parse_arguments(LAYER "" "" "SOURCES;SEES" ${ARGN})
  set(stage ${PROJECT_BINARY_DIR}/layers/${target})
  file(REMOVE_RECURSE ${stage})
  foreach(seen IN LISTS LAYER_SEES)
    get_filename_component(parent ${stage}/${seen} DIRECTORY)
    file(MAKE_DIRECTORY ${parent})
    file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${seen} ${stage}/${seen} SYMBOLIC)
  endforeach()
  add_library(${target} OBJECT ${LAYER_SOURCES})
  target_include_directories(${target} PRIVATE ${stage})
  target_link_libraries(${target} PRIVATE fxgraph_warnings Threads::Threads)
endfunction()
