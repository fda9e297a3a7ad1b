# Zips the folder SRC into the OOXML package OUT, [Content_Types].xml first.
file(GLOB_RECURSE files RELATIVE ${SRC} ${SRC}/*)
list(REMOVE_ITEM files "[Content_Types].xml")
list(SORT files)
execute_process(COMMAND ${CMAKE_COMMAND} -E tar cf ${OUT} --format=zip -- "[Content_Types].xml" ${files}
                WORKING_DIRECTORY ${SRC} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "zipping ${SRC} failed")
endif()
