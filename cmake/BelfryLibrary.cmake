# The headers of Qt and of the standard library that most sources include. To parse them takes four fifths of the time
# of a compilation, so they are precompiled: once for what links Qt Core alone, once for what links Qt Widgets.
# Sources include what they use all the same; the build works without (CMAKE_DISABLE_PRECOMPILE_HEADERS).
set(belfry_core_headers
    <QCoreApplication> <QDateTime> <QFileInfo> <QList> <QSet> <QString> <QTimer> <QUuid> <QVariant>
    <algorithm> <chrono> <functional> <memory> <optional> <span> <utility> <vector>)
set(belfry_widgets_headers ${belfry_core_headers}
    <QAbstractItemView> <QApplication> <QBoxLayout> <QDialog> <QLabel> <QLineEdit> <QMainWindow> <QPainter> <QPushButton>
    <QStyleOption> <QToolButton>)

foreach(kind core widgets)
    set(owner belfry_${kind}_headers)
    file(CONFIGURE OUTPUT ${owner}.cpp CONTENT "")
    add_library(${owner} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${owner}.cpp)
    set_target_properties(${owner} PROPERTIES AUTOMOC OFF)
    target_precompile_headers(${owner} PRIVATE ${${owner}})
endforeach()
target_link_libraries(belfry_core_headers PRIVATE belfry_options Qt6::Core)
target_link_libraries(belfry_widgets_headers PRIVATE belfry_options Qt6::Widgets)

# belfry_precompiled_headers(TARGET): the set that suits the libraries that TARGET links.
function(belfry_precompiled_headers target)
    get_target_property(libraries ${target} LINK_LIBRARIES)
    if(libraries MATCHES "Qt6::Widgets|belfry_(toolkit|ui|app)")
        target_precompile_headers(${target} REUSE_FROM belfry_widgets_headers)
    else()
        target_precompile_headers(${target} REUSE_FROM belfry_core_headers)
    endif()
endfunction()

# belfry_library(NAME FOLDER SOURCES class... [PUBLIC library...] [PRIVATE library...])
#
# A static library of the classes in src/FOLDER that SOURCES names: of each the .h, the .cpp or both. PUBLIC and
# PRIVATE are what it links, as in target_link_libraries().
#
# Includes name folder and file ("store/Plan.h"). Each library gets an include folder of its own that
# holds links to just its own headers, so that a source sees exactly the libraries that it uses: an
# include that goes against the order of the layers does not compile.
function(belfry_library name folder)
    cmake_parse_arguments(PARSE_ARGV 2 ARG "" "" "SOURCES;PUBLIC;PRIVATE")
    set(visible ${PROJECT_BINARY_DIR}/include/${name})
    file(REMOVE_RECURSE ${visible})
    file(MAKE_DIRECTORY ${visible}/${folder})
    add_library(${name} STATIC)
    set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX) # also where moc makes the only source
    foreach(class IN LISTS ARG_SOURCES)
        set(stem ${PROJECT_SOURCE_DIR}/src/${folder}/${class})
        foreach(ending h cpp)
            if(EXISTS ${stem}.${ending})
                target_sources(${name} PRIVATE ${stem}.${ending})
            endif()
        endforeach()
        if(NOT EXISTS ${stem}.h AND NOT EXISTS ${stem}.cpp)
            message(FATAL_ERROR "${name}: there is no ${stem}.h or .cpp")
        endif()
        if(EXISTS ${stem}.h)
            file(CREATE_LINK ${stem}.h ${visible}/${folder}/${class}.h SYMBOLIC)
        endif()
    endforeach()
    target_include_directories(${name} PUBLIC ${visible})
    target_link_libraries(${name} PUBLIC belfry_options ${ARG_PUBLIC} PRIVATE ${ARG_PRIVATE})
    belfry_precompiled_headers(${name})
endfunction()

# belfry_test(FILE [LIBRARY...])
#
# The Qt Test program tests/FILE.cpp as a CTest test of that name. Each run gets a fixed zone and
# locale, no display and no sound server.
function(belfry_test file)
    get_filename_component(name ${file} NAME)
    add_executable(${name} ${file}.cpp)
    target_include_directories(${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
    target_compile_definitions(${name} PRIVATE
        BELFRY_RESOURCES="${PROJECT_BINARY_DIR}/resources"
        BELFRY_SCHEMA="${PROJECT_SOURCE_DIR}/resources/schema.sql")
    add_dependencies(${name} resources)
    target_link_libraries(${name} PRIVATE belfry_options Qt6::Test ${ARGN})
    # Not -fPIE: it shares the precompiled headers of the libraries.
    target_compile_options(${name} PRIVATE -fPIC)
    belfry_precompiled_headers(${name})
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 300 ENVIRONMENT
        "QT_QPA_PLATFORM=offscreen;TZ=Europe/Berlin;LC_ALL=C.UTF-8;PULSE_SERVER=unix:/nonexistent/belfry-test;DBUS_SESSION_BUS_ADDRESS=disabled:;DBUS_SYSTEM_BUS_ADDRESS=disabled:")
endfunction()

# belfry_tests_need(PROGRAM TEST...)
#
# Leaves out the tests TEST of this folder, with a message, where PROGRAM is not installed.
function(belfry_tests_need program)
    find_program(FOUND_${program} ${program})
    mark_as_advanced(FOUND_${program})
    if(NOT FOUND_${program})
        list(JOIN ARGN " " tests)
        message(STATUS "Without ${program} these tests are left out: ${tests}")
        set_tests_properties(${ARGN} PROPERTIES DISABLED TRUE)
    endif()
endfunction()
