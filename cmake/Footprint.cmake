# Prints a program's size without its symbols and the libraries that it needs; fails above LIMIT bytes, if given.
# cmake -DPROGRAM=... -DSTRIP=... -DOBJDUMP=... [-DLIMIT=...] -P Footprint.cmake
execute_process(COMMAND ${STRIP} -o ${PROGRAM}.stripped ${PROGRAM} COMMAND_ERROR_IS_FATAL ANY)
file(SIZE ${PROGRAM}.stripped size)
file(REMOVE ${PROGRAM}.stripped)
execute_process(COMMAND ${OBJDUMP} -p ${PROGRAM} OUTPUT_VARIABLE headers COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "NEEDED +[^\n]+" needed "${headers}")
list(TRANSFORM needed REPLACE "NEEDED +" "")
list(JOIN needed " " needed)
get_filename_component(name ${PROGRAM} NAME)
message("${name}: ${size} bytes, needs ${needed}")
if(LIMIT AND size GREATER LIMIT)
  message(FATAL_ERROR "${name}: more than ${LIMIT} bytes")
endif()
