# The libraries below this one. All are Debian packages; scripts/install-deps.sh names them.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
pkg_check_modules(TAGLIB REQUIRED IMPORTED_TARGET taglib>=1.13)
find_package(fmt 9 REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
pkg_check_modules(SIMDJSON REQUIRED IMPORTED_TARGET simdjson)
# Pictures. TIFF is read by our own code: Debian's libtiff brings in libjbig, which is under the GPL.
find_package(ZLIB REQUIRED)
find_package(PNG REQUIRED)
find_package(JPEG REQUIRED)
pkg_check_modules(WEBP REQUIRED IMPORTED_TARGET libwebp)
find_path(STB_INCLUDE_DIR stb/stb_image.h REQUIRED)

# Collections.
find_package(pugixml REQUIRED)
find_package(EXPAT REQUIRED)
pkg_check_modules(UTF8PROC REQUIRED IMPORTED_TARGET libutf8proc)
# Headers alone: queues and timers over Asio, and libcurl, which the first request loads.
find_path(ASIO_INCLUDE_DIR asio.hpp REQUIRED)
find_path(CURL_INCLUDE_DIR curl/curl.h REQUIRED)

find_path(LIBB64_INCLUDE_DIR b64/cencode.h REQUIRED)
find_library(LIBB64_LIBRARY b64 REQUIRED)
add_library(zaltag_libb64 INTERFACE)
target_include_directories(zaltag_libb64 SYSTEM INTERFACE ${LIBB64_INCLUDE_DIR})
target_link_libraries(zaltag_libb64 INTERFACE ${LIBB64_LIBRARY})
