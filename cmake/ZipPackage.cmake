# Zips the folder SRC into the OOXML package OUT, [Content_Types].xml first.
file(GLOB_RECURSE files RELATIVE ${SRC} ${SRC}/*)
list(REMOVE_ITEM files "[Content_Types].xml")
list(SORT files)
# The zip tool writes local headers that agree with the central directory (strict readers
# check this); cmake's own zip writer leaves the local time fields empty.
find_program(ZP_ZIP zip)
if(ZP_ZIP)
  execute_process(COMMAND ${ZP_ZIP} -X -D -q -nw ${OUT} -- "[Content_Types].xml" ${files}
                  WORKING_DIRECTORY ${SRC} RESULT_VARIABLE rc)
else()
  execute_process(COMMAND ${CMAKE_COMMAND} -E tar cf ${OUT} --format=zip -- "[Content_Types].xml" ${files}
                  WORKING_DIRECTORY ${SRC} RESULT_VARIABLE rc)
endif()
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "zipping ${SRC} failed")
endif()
