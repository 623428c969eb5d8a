# velnor_room(NAME [FOLDER folder] [SOURCES ...] [PUBLIC_HEADERS ...] [LINKS ...] [PRIVATE_LINKS ...])
#
# One library target "velnor_NAME" for a room; without SOURCES, of every .cpp file in its folder. The root folder is on nobody's include path: each room
# has a folder of links in the build tree, <build>/rooms/NAME/<path from the root>, and a target sees
# the folders of the rooms it links and no others. So a wrong include does not compile.
#
# PUBLIC_HEADERS lists what other rooms may include, relative to the room's folder; without it, the
# whole folder is public. The room itself always sees its whole folder.
#
# velnor_test(NAME SOURCES ... LINKS ... [QT] [LABEL room]) makes one test program and registers it.

function(velnor_link_headers root folder)
    foreach(header IN LISTS ARGN)
        set(link ${root}/${folder}/${header})
        get_filename_component(place ${link} DIRECTORY)
        file(MAKE_DIRECTORY ${place})
        file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder}/${header} ${link} SYMBOLIC)
    endforeach()
endfunction()

function(velnor_link_folder root folder)
    get_filename_component(place ${root}/${folder} DIRECTORY)
    file(MAKE_DIRECTORY ${place})
    file(CREATE_LINK ${CMAKE_SOURCE_DIR}/${folder} ${root}/${folder} SYMBOLIC)
endfunction()

function(velnor_room name)
    cmake_parse_arguments(ROOM "" "FOLDER" "SOURCES;PUBLIC_HEADERS;LINKS;PRIVATE_LINKS" ${ARGN})
    file(RELATIVE_PATH folder ${CMAKE_SOURCE_DIR} ${CMAKE_CURRENT_SOURCE_DIR})
    if(ROOM_FOLDER)
        set(folder ${ROOM_FOLDER})
    endif()
    set(shown ${CMAKE_BINARY_DIR}/rooms/${name})
    set(own ${CMAKE_BINARY_DIR}/rooms/${name}-own)
    file(REMOVE_RECURSE ${shown} ${own})
    file(MAKE_DIRECTORY ${shown})
    if(ROOM_PUBLIC_HEADERS)
        velnor_link_headers(${shown} ${folder} ${ROOM_PUBLIC_HEADERS})
    else()
        velnor_link_folder(${shown} ${folder})
    endif()
    if(NOT ROOM_SOURCES)
        file(GLOB ROOM_SOURCES CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
    endif()
    if(NOT ROOM_SOURCES)  # headers only
        add_library(velnor_${name} INTERFACE)
        target_include_directories(velnor_${name} INTERFACE ${shown})
        target_link_libraries(velnor_${name} INTERFACE ${ROOM_LINKS})
        return()
    endif()
    velnor_link_folder(${own} ${folder})
    add_library(velnor_${name} STATIC ${ROOM_SOURCES})
    target_include_directories(velnor_${name} PUBLIC ${shown} PRIVATE ${own})
    target_link_libraries(velnor_${name} PUBLIC ${ROOM_LINKS} PRIVATE ${ROOM_PRIVATE_LINKS})
    if(CMAKE_AUTOMOC)
        velnor_precompiled(velnor_${name} widgets)
    else()
        velnor_precompiled(velnor_${name} room)
    endif()
endfunction()

function(velnor_test name)
    cmake_parse_arguments(TEST "QT" "LABEL" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${TEST_SOURCES})
    target_link_libraries(${name} PRIVATE ${TEST_LINKS})
    velnor_test_options(${name})
    if(TEST_QT)
        set_target_properties(${name} PROPERTIES AUTOMOC ON)
        target_link_libraries(${name} PRIVATE Qt6::Test)
        velnor_precompiled(${name} window)
    else()
        velnor_precompiled(${name} unit)
        target_link_libraries(${name} PRIVATE GTest::gmock GTest::gtest_main)
        target_compile_options(${name} PRIVATE -Wno-dangling-else)  # an EXPECT under an if
    endif()
    # A test of a room may look at the room's own headers: one source tree for all tests.
    set(all ${CMAKE_BINARY_DIR}/rooms/tests)
    target_include_directories(${name} PRIVATE ${all})
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES LABELS "${TEST_LABEL}" TIMEOUT 300
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;VELNOR_CORPUS=${VELNOR_CORPUS};VELNOR_TOOLS=${VELNOR_TOOLS};VELNOR_PYTHON=${VELNOR_PYTHON}")
endfunction()
