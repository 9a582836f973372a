# Installs BUILD in several ways below WORK and runs what was installed.
cmake_minimum_required(VERSION 3.25)

function(install)
    execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} ${ARGN}
                    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(expect_equal what seen wanted)
    if(NOT seen STREQUAL wanted)
        message(FATAL_ERROR "${what}:\n${seen}\nwanted:\n${wanted}")
    endif()
endfunction()

# Runs a tvrcim; what it wrote must contain a text.
function(expect_from program status text)
    execute_process(COMMAND ${program} ${ARGN} RESULT_VARIABLE result
                    OUTPUT_VARIABLE output ERROR_VARIABLE output)
    string(FIND "${output}" "${text}" found)
    if(NOT result STREQUAL status OR found EQUAL -1)
        message(FATAL_ERROR "${program} ${ARGN}: status ${result}\n${output}\nwanted ${status}: ${text}")
    endif()
endfunction()

function(expect_files tree)
    file(GLOB_RECURSE files RELATIVE ${tree} ${tree}/*)
    list(FILTER files EXCLUDE REGEX "^share/doc/")
    list(SORT files)
    list(SORT ARGN)
    expect_equal("files below ${tree}" "${files}" "${ARGN}")
endfunction()

set(provider
    bin/tvrcim lib/cmpi/libtavrin_fc_provider.so share/bash-completion/completions/tvrcim
    share/man/man1/tvrcim.1 share/tavrin-fc-provider/mof/cim_base.mof
    share/tavrin-fc-provider/mof/cim_qualifiers.mof share/tavrin-fc-provider/mof/tavrin_fc.mof
    share/tavrin-fc-provider/mof/tavrin_fc_schema.mof)
set(sim lib/tavrin-fc-provider/sim/libHBAAPI.so lib/tavrin-fc-provider/sim/liblrmapi.so
        lib/tavrin-fc-provider/sim/libtvrsim.so)
execute_process(COMMAND ${TVRCIM} --sim list OUTPUT_VARIABLE ports COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE ${WORK})

# One component after the other, and what is said in between.
install(--prefix ${WORK}/first --component provider)
expect_files(${WORK}/first ${provider})
expect_from(${WORK}/first/bin/tvrcim 0 TVRHBA_FCPort classes TVRHBA_FCPort)
set(missing ${WORK}/first/lib/tavrin-fc-provider/sim/libtvrsim.so)
expect_from(${WORK}/first/bin/tvrcim 2 "there is no simulator at ${missing}; the install component \"sim\""
            --sim list)
install(--prefix ${WORK}/first --component sim)
expect_files(${WORK}/first ${provider} ${sim})
expect_from(${WORK}/first/bin/tvrcim 0 "${ports}" --sim list)

# Moved, with the first place gone, and staged with the prefix of the configuration.
file(RENAME ${WORK}/first ${WORK}/second)
expect_from(${WORK}/second/bin/tvrcim 0 "${ports}" --sim list)
file(REMOVE ${WORK}/second/lib/cmpi/libtavrin_fc_provider.so)
expect_from(${WORK}/second/bin/tvrcim 2 "there is no provider module at ${WORK}/second/lib/cmpi" list)
set(ENV{DESTDIR} ${WORK}/staged)
install()
file(GLOB_RECURSE staged ${WORK}/staged/tvrcim)
list(FILTER staged INCLUDE REGEX "/bin/tvrcim$")
expect_from(${staged} 0 "${ports}" --sim list)

file(REMOVE_RECURSE ${WORK})
