# Run by CPack between installing the files in a scratch folder and packing them: what would differ from one build
# to the next is removed. The times of all files become SOURCE_DATE_EPOCH, if that is set.
if(CPACK_GENERATOR STREQUAL "DEB")
  file(GLOB programs ${CPACK_TEMPORARY_DIRECTORY}/usr/bin/*)
  execute_process(
    COMMAND strip --remove-section=.comment --remove-section=.note ${programs} COMMAND_ERROR_IS_FATAL ANY)
endif()
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(
    COMMAND find ${CPACK_TEMPORARY_DIRECTORY} -exec touch --no-dereference --date=@$ENV{SOURCE_DATE_EPOCH} {} +
    COMMAND_ERROR_IS_FATAL ANY)
endif()
