# Read by CPack: in ZIP archives stands the local time, which is not the builder's where the same
# bytes are to come of the same files.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  set(ENV{TZ} UTC)
endif()
