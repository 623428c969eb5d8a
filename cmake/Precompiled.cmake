# Precompiled headers, one set for each kind of target, shared by all targets of that kind: most of the time of
# a build from nothing goes into reading the same library headers hundreds of times.
#
# velnor_precompiled(TARGET KIND) lets TARGET use the set KIND. Libraries: "room" (standard library), "widgets"
# (with Qt). Tests: "unit" (with GoogleTest), "window" (with Qt). A source file includes what it needs all the same:
# it has to compile with VELNOR_PCH off too, as the preset "fuzz" does.
option(VELNOR_PCH "Use precompiled headers" ON)
if(VELNOR_PCH AND CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache$")
    list(PREPEND CMAKE_CXX_COMPILER_LAUNCHER env CCACHE_SLOPPINESS=pch_defines,time_macros)
    add_compile_options($<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
endif()

set(velnor_room_headers <algorithm> <array> <bit> <charconv> <cmath> <cstdint> <cstring> <functional> <map> <memory>
    <optional> <set> <span> <string> <string_view> <utility> <vector>)
set(velnor_widgets_headers ${velnor_room_headers} <QtWidgets/QtWidgets>)
set(velnor_unit_headers ${velnor_room_headers} <random> <filesystem> <fstream> <gmock/gmock.h> <gtest/gtest.h>)
set(velnor_window_headers ${velnor_widgets_headers} <random> <filesystem> <fstream>)

# Tests are built quickly rather than to be quick. The sets of the tests have to be built the same way.
function(velnor_test_options target)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Release>:-O1>)
endfunction()

# The target whose build makes the set, made when the first target of the kind asks for it.
function(velnor_precompiled_set kind)
    set(source ${CMAKE_SOURCE_DIR}/cmake/precompiled/${kind}.cpp)
    set(name velnor_pch_${kind})
    if(kind STREQUAL room OR kind STREQUAL widgets)
        add_library(${name} STATIC ${source})
    else()
        add_executable(${name} ${source})  # programs are compiled as such: a library's set does not suit them
    endif()
    if(kind STREQUAL unit OR kind STREQUAL window)
        velnor_test_options(${name})
    endif()
    set_target_properties(${name} PROPERTIES AUTOMOC OFF AUTORCC OFF)
    if(kind STREQUAL widgets OR kind STREQUAL window)
        target_link_libraries(${name} PRIVATE Qt6::Widgets)
    elseif(kind STREQUAL unit)
        target_link_libraries(${name} PRIVATE GTest::gmock)
    endif()
    target_precompile_headers(${name} PRIVATE ${velnor_${kind}_headers})
endfunction()

function(velnor_precompiled target kind)
    if(NOT VELNOR_PCH)
        return()
    endif()
    if(NOT TARGET velnor_pch_${kind})
        velnor_precompiled_set(${kind})
    endif()
    target_precompile_headers(${target} REUSE_FROM velnor_pch_${kind})
endfunction()
