# What makes a fault in what users run hard to exploit: every byte of a log may be a stranger's.
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -fstack-protector-strong -fPIE)
    add_link_options(-pie -Wl,-z,relro,-z,now)
endif()
