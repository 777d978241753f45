# The library: its sources are compiled once and make both the shared and the static library.

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)
find_package(CURL 7.88 REQUIRED)
find_package(OpenSSL 3.0 REQUIRED)
find_package(simdjson 3.0 REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(uriparser 0.9.7 REQUIRED)
find_package(Boost 1.74 REQUIRED)
find_package(ICU 72 REQUIRED COMPONENTS uc i18n)
find_package(PkgConfig REQUIRED)
pkg_check_modules(KORVOGIT_DEFLATE REQUIRED IMPORTED_TARGET libdeflate)
pkg_check_modules(KORVOGIT_BROTLI REQUIRED IMPORTED_TARGET libbrotlidec)

# Linked into whatever contains the objects, as CMake and as pkg-config name them.
# cmake/KorvoGitServiceConfig.cmake.in finds the same for users of the static library.
set(korvogit_link_libraries
    CURL::libcurl
    OpenSSL::SSL
    OpenSSL::Crypto
    simdjson::simdjson
    uriparser::uriparser
    ICU::i18n
    ICU::uc
    PkgConfig::KORVOGIT_DEFLATE
    PkgConfig::KORVOGIT_BROTLI
    Threads::Threads
    ${CMAKE_DL_LIBS})
string(JOIN ", " korvogit_pkgconfig_requires
       "openssl >= 3.0" "simdjson >= 3.0" "liburiparser >= 0.9.7" "icu-i18n >= 72" "icu-uc >= 72"
       "libdeflate >= 1.14" "libbrotlidec >= 1.0.9")
# libcurl is linked by its name: `pkg-config --static libcurl` asks for all that libcurl itself was built
# with, most of which a machine that can link with libcurl does not have.
set(korvogit_pkgconfig_libs "-lcurl -pthread")
string(REGEX REPLACE " >= [0-9.]+" "" korvogit_pkgconfig_modules "libcurl, ${korvogit_pkgconfig_requires}")
string(REPLACE ", " ";" korvogit_pkgconfig_modules "${korvogit_pkgconfig_modules}")

set(korvogit_sources)
foreach(layer IN ITEMS support core service adapters)
    file(GLOB_RECURSE layer_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${layer}/*.cpp)
    list(APPEND korvogit_sources ${layer_sources})
endforeach()
file(GLOB korvogit_public_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/KorvoGitService/*.h)

add_library(KorvoGitService_objects OBJECT ${korvogit_sources})
target_include_directories(KorvoGitService_objects
                           PRIVATE ${PROJECT_SOURCE_DIR}/include ${PROJECT_SOURCE_DIR})
target_link_libraries(KorvoGitService_objects
                      PRIVATE ${korvogit_link_libraries} nlohmann_json::nlohmann_json Boost::headers)
# Asio alone is used of Boost, without its deprecated names.
target_compile_definitions(KorvoGitService_objects PRIVATE BOOST_ASIO_NO_DEPRECATED)
# Nobody replaces the library's functions: its calls of its own may be expanded in line, and those that are
# left are bound when it is linked, see below.
target_compile_options(KorvoGitService_objects PRIVATE -fno-semantic-interposition)
set_target_properties(KorvoGitService_objects PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    UNITY_BUILD_MODE GROUP)
# Where sources are compiled together, those of a folder are. The adapters are alike, down to the names of
# their constants, and so are the two keepers of memory that is used again.
foreach(source IN LISTS korvogit_sources)
    cmake_path(GET source PARENT_PATH folder)
    cmake_path(GET folder FILENAME group)
    if(NOT source MATCHES "/adapters/RKT|/ReusedText\\.cpp$")
        set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${group})
    endif()
endforeach()
# The library that is delivered is compiled source by source.
if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    set_target_properties(KorvoGitService_objects PROPERTIES UNITY_BUILD OFF)
endif()

function(korvogit_describe_library target)
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_compile_features(${target} PUBLIC cxx_std_20)
    target_link_libraries(${target} PRIVATE ${korvogit_link_libraries})
    set_target_properties(${target} PROPERTIES OUTPUT_NAME KorvoGitService)
endfunction()

add_library(KorvoGitService SHARED $<TARGET_OBJECTS:KorvoGitService_objects>)
add_library(KorvoGitService::KorvoGitService ALIAS KorvoGitService)
korvogit_describe_library(KorvoGitService)
set(korvogit_exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
set_target_properties(KorvoGitService PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS ${korvogit_exports})
# The loader's thread and the pool's threads run the library's code until the process ends, so an
# application that closes a plug-in must not unmap it under them. Its calls of its own functions are
# bound when it is linked: a page makes thousands.
target_link_options(KorvoGitService PRIVATE
    -Wl,-z,nodelete -Wl,-Bsymbolic-functions -Wl,--as-needed -Wl,--version-script,${korvogit_exports})

add_library(KorvoGitService_static STATIC $<TARGET_OBJECTS:KorvoGitService_objects>)
add_library(KorvoGitService::KorvoGitServiceStatic ALIAS KorvoGitService_static)
korvogit_describe_library(KorvoGitService_static)
set_target_properties(KorvoGitService_static PROPERTIES EXPORT_NAME KorvoGitServiceStatic)
