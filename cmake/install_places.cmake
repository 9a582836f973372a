# Where `cmake --install` puts things. Paths are below the prefix unless they are absolute; tvrcim finds
# what is below the prefix from where it stands itself, so that the tree may be moved.
#
# Component `provider` is the module, its class model and the command line; `sim` the simulated
# adapters, in a directory that no loader searches by itself: their files have the names of the real
# libraries.
include(GNUInstallDirs)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME provider)

set(TVR_PROVIDER_DIR lib/cmpi CACHE STRING
    "where the object manager looks for provider modules")
set(TVR_MOF_DIR ${CMAKE_INSTALL_DATADIR}/tavrin-fc-provider/mof CACHE STRING
    "where the class model goes")
set(TVR_SIM_DIR lib/tavrin-fc-provider/sim CACHE STRING
    "where the simulated adapters go; not where the loader looks for libraries")

# Sets a variable to the place of a directory as seen from that of the programs.
function(tvr_from_programs directory variable)
    if(NOT IS_ABSOLUTE ${directory} AND NOT IS_ABSOLUTE ${CMAKE_INSTALL_BINDIR})
        file(RELATIVE_PATH directory /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${directory})
    elseif(NOT IS_ABSOLUTE ${directory})
        set(directory ${CMAKE_INSTALL_PREFIX}/${directory})
    endif()
    set(${variable} ${directory} PARENT_SCOPE)
endfunction()
