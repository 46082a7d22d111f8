# How what does not ship is compiled. Of a whole ./check the compiler takes nearly all the time, and
# of that what does not ship takes nine tenths.
option(CORVANE_BATCH "Compile what does not ship unoptimised and in large pieces" OFF)
if(CORVANE_BATCH)
    # Not in a release, whose hardening needs some optimisation.
    add_compile_options($<IF:$<CONFIG:RelWithDebInfo>,-O1,-O0>)
endif()
