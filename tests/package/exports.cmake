# The shared library shows the public interface and nothing else.
#
# cmake -DLIBRARY=... -DNM=... -P exports.cmake

execute_process(COMMAND ${NM} --dynamic --defined-only --demangle ${LIBRARY} OUTPUT_VARIABLE output
                COMMAND_ERROR_IS_FATAL ANY)
string(REPLACE "\n" ";" lines "${output}")
set(plain 0)
set(members 0)
foreach(line IN LISTS lines)
    if(NOT line MATCHES "^[0-9a-f]+ [A-Za-z] (.+)$")
        continue()
    endif()
    set(symbol "${CMAKE_MATCH_1}")
    if(symbol MATCHES "^quorvaneDecode[A-Za-z0-9_]+$")
        math(EXPR plain "${plain} + 1")
    elseif(symbol MATCHES "^CQuorvaneEngine::Decode")
        math(EXPR members "${members} + 1")
    elseif(NOT symbol MATCHES "^(CQuorvaneEngine::|CString::)"
           AND NOT symbol MATCHES "^(vtable|typeinfo|typeinfo name) for CQuorvaneEngine$"
           AND NOT symbol MATCHES "^quorvane::(Decode|DecodeInto|Decodings|FindDecoding|Version)\\(")
        message(SEND_ERROR "exported, but not public: ${symbol}")
    endif()
endforeach()
if(NOT plain EQUAL 17 OR NOT members EQUAL 17)
    message(SEND_ERROR "exported ${plain} plain functions and ${members} members, not 17 each")
endif()
