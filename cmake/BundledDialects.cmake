# trunnion_bundle_dialects(SOURCE FOLDER): writes SOURCE, which holds the texts of FOLDER/*.toml.
function(trunnion_bundle_dialects source folder)
  file(GLOB files CONFIGURE_DEPENDS ${folder}/*.toml) # in the order of their names
  set(TRUNNION_DIALECTS "")
  foreach(file IN LISTS files)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    cmake_path(GET file STEM name)
    file(READ ${file} text)
    string(APPEND TRUNNION_DIALECTS "\n        {\"${name}\", R\"toml(${text})toml\"},")
  endforeach()
  configure_file(post/BundledDialects.cpp.in ${source} @ONLY)
endfunction()
