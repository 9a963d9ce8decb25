# Writes the man page OUTPUT from the text PAGE.
#
# cmake -DSCDOC=... -DPAGE=... -DOUTPUT=... -P make_man_page.cmake

execute_process(COMMAND ${SCDOC} INPUT_FILE ${PAGE} OUTPUT_FILE ${OUTPUT}
                COMMAND_ERROR_IS_FATAL ANY)
