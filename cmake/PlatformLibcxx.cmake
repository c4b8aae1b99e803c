# Android builds with the NDK but against the platform's own C++ library (ANDROID_STL none), as
# vendor code must be: std::__1 and libc++.so, not the NDK's std::__ndk1 and libc++_shared.so.
set(VIRTUAL_MODEM_LIBCXX_INCLUDE "" CACHE STRING
  "Folders of the platform's C++ headers, the one with __config_site first")
set(VIRTUAL_MODEM_LIBCXX_LIBRARY "" CACHE FILEPATH "The platform's libc++.so, for the target")

if(NOT VIRTUAL_MODEM_LIBCXX_INCLUDE OR NOT EXISTS "${VIRTUAL_MODEM_LIBCXX_LIBRARY}")
  message(FATAL_ERROR
    "A vendor build needs the platform's C++ library. Set ANDROID_LIBCXX_INCLUDE (folders of its "
    "headers) and ANDROID_LIBCXX_LIBRARY (its libc++.so) in the environment: docs/android.md.")
endif()
add_compile_options(-nostdinc++)
list(PREPEND CMAKE_CXX_STANDARD_INCLUDE_DIRECTORIES ${VIRTUAL_MODEM_LIBCXX_INCLUDE})
string(PREPEND CMAKE_CXX_STANDARD_LIBRARIES "\"${VIRTUAL_MODEM_LIBCXX_LIBRARY}\" ")
