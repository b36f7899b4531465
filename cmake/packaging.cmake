# Installation and the Debian packages: programs, man pages, bash completion, documents and the
# examples of the tool, and likewise of the companions where they are built. Version and commit go
# into the man pages and the packages.

set(package_name zvr-al-gen-url-list)
set(companions_package_name zvr-al-companions)
set(ZVR_MAINTAINER "URL list maintainers <maintainers@example.org>" CACHE STRING
    "Maintainer of the Debian package, name and mail address")

include(GNUInstallDirs)
set(doc_dir ${CMAKE_INSTALL_DATAROOTDIR}/doc/${package_name})

# Commit and its date; a tree without its history says so, unless they are given.
set(ZVR_COMMIT "" CACHE STRING "Commit that is built; found out when empty")
set(commit "${ZVR_COMMIT}")
set(commit_time "$ENV{SOURCE_DATE_EPOCH}")
find_package(Git QUIET)
if(GIT_FOUND AND EXISTS ${CMAKE_SOURCE_DIR}/.git)
    function(ask_git variable)
        execute_process(COMMAND ${GIT_EXECUTABLE} ${ARGN} WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
            OUTPUT_VARIABLE output OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
        set(${variable} "${output}" PARENT_SCOPE)
    endfunction()
    if(NOT commit)
        ask_git(commit rev-parse --short=12 HEAD)
    endif()
    if(NOT commit_time)
        ask_git(commit_time show --no-patch --format=%ct HEAD)
    endif()
    ask_git(head_log rev-parse --git-path logs/HEAD) # written to at every commit
    get_filename_component(head_log "${head_log}" ABSOLUTE BASE_DIR ${CMAKE_SOURCE_DIR})
    if(EXISTS "${head_log}")
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${head_log}")
    endif()
endif()
if(NOT commit)
    set(commit unknown)
endif()
if(NOT commit_time)
    string(TIMESTAMP commit_time %s UTC)
endif()
set(saved_epoch "$ENV{SOURCE_DATE_EPOCH}")
set(ENV{SOURCE_DATE_EPOCH} ${commit_time}) # the moment that TIMESTAMP gives
string(TIMESTAMP man_date "%Y-%m-%d" UTC)
if(saved_epoch)
    set(ENV{SOURCE_DATE_EPOCH} "${saved_epoch}")
else()
    unset(ENV{SOURCE_DATE_EPOCH})
endif()

find_program(GZIP_COMMAND gzip REQUIRED)

# Fills in a template and compresses it without name and time, so that equal builds are equal.
function(make_document template document)
    configure_file(${template} ${document} @ONLY)
    execute_process(COMMAND ${GZIP_COMMAND} -9 --no-name --force --keep ${document}
        COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(install_manual_page page component)
    string(REGEX REPLACE ".*\\." "" section ${page})
    make_document(${CMAKE_SOURCE_DIR}/man/${page}.in ${CMAKE_BINARY_DIR}/man/${page})
    install(FILES ${CMAKE_BINARY_DIR}/man/${page}.gz COMPONENT ${component}
        DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section})
endfunction()

function(install_completion program component)
    install(FILES ${CMAKE_SOURCE_DIR}/completion/${program}.bash COMPONENT ${component}
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions RENAME ${program})
endfunction()

foreach(page zvr_al_gen_url_list.1 zvr_al_gen_url_list_check.1 zvr_replay_settings.dat.5)
    install_manual_page(${page} tool)
endforeach()

make_document(${CMAKE_SOURCE_DIR}/packaging/changelog.in ${CMAKE_BINARY_DIR}/packaging/changelog)
install(FILES ${CMAKE_BINARY_DIR}/packaging/changelog.gz ${CMAKE_SOURCE_DIR}/packaging/copyright
    ${CMAKE_SOURCE_DIR}/docs/files.md ${CMAKE_SOURCE_DIR}/docs/limits.md
    ${CMAKE_SOURCE_DIR}/docs/troubleshooting.md
    DESTINATION ${doc_dir} COMPONENT tool)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/examples DESTINATION ${doc_dir} COMPONENT tool
    PATTERN .tmp EXCLUDE PATTERN ".git*" EXCLUDE)
install(TARGETS zvr_al_gen_url_list zvr_al_gen_url_list_check COMPONENT tool)
install_completion(zvr_al_gen_url_list tool)

if(ZVR_BUILD_COMPANIONS)
    foreach(program ${ZVR_COMPANIONS})
        install(TARGETS ${program} COMPONENT companions)
        install_manual_page(${program}.1 companions)
        install_completion(${program} companions)
    endforeach()
    install_manual_page(zvr_al_spark.1 companions) # which is no target
    install_completion(zvr_al_spark companions)
    # Libraries of which something gets into the programs or onto the page have their notices here.
    file(READ ${CMAKE_SOURCE_DIR}/packaging/copyright copyright)
    file(READ ${CMAKE_SOURCE_DIR}/packaging/copyright_of_libraries copyright_of_libraries)
    file(WRITE ${CMAKE_BINARY_DIR}/packaging/companions/copyright
        "${copyright}\n${copyright_of_libraries}")
    install(FILES ${CMAKE_BINARY_DIR}/packaging/changelog.gz
        ${CMAKE_BINARY_DIR}/packaging/companions/copyright ${CMAKE_SOURCE_DIR}/docs/report.md
        ${CMAKE_SOURCE_DIR}/docs/cluster.md ${CMAKE_SOURCE_DIR}/docs/cluster_format.md
        DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${companions_package_name}
        COMPONENT companions)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ${package_name})
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
# The first line of each description is the summary.
set(CPACK_COMPONENT_TOOL_DESCRIPTION
"make URL lists for load tests from web-server access logs
Reads the access logs that a test scenario names (Apache and custom
formats, IIS, WebLogic), ties the requests to user sessions, collapses
them into a table of unique URLs, classifies these by the patterns of a
replay profile, and writes the lists that the replay reads. What a run
has found is used again as long as nothing has changed.
.
This package was built from commit ${commit}.")
set(CPACK_PACKAGE_CONTACT "${ZVR_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL tool)
set(CPACK_DEBIAN_TOOL_PACKAGE_NAME ${package_name})
if(ZVR_BUILD_COMPANIONS)
    list(APPEND CPACK_COMPONENTS_ALL companions)
    set(CPACK_DEBIAN_COMPANIONS_PACKAGE_NAME ${companions_package_name})
    set(CPACK_DEBIAN_COMPANIONS_PACKAGE_DEPENDS "${package_name} (= ${PROJECT_VERSION})")
    set(CPACK_DEBIAN_COMPANIONS_PACKAGE_RECOMMENDS "python3")
    set(CPACK_COMPONENT_COMPANIONS_DESCRIPTION
"set up, check and explain the scenarios of zvr_al_gen_url_list
Programs around the one that makes URL lists from access logs: they
write a scenario for given logs, find mistakes in one, say of every line
why it does not count and of every pattern what it takes, report on the
load that the logs hold, and make URL lists on a Spark cluster.
.
This package was built from commit ${commit}.")
endif()
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
