# tav_content_hash(RESULT TEXT): how a page names to the browser the one script or style that it may
# run: 'sha256-...', the checksum in base64.
function(tav_content_hash result text)
    set(digits ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
    string(SHA256 hexadecimal "${text}")
    # Three hexadecimal digits are two of base64. The checksum has 64; base64 says by "=" that the last
    # two of these 66 are not of it.
    string(APPEND hexadecimal "00")
    set(base64 "")
    foreach(at RANGE 0 63 3)
        string(SUBSTRING ${hexadecimal} ${at} 3 three)
        math(EXPR high "0x${three} >> 6")
        math(EXPR low "0x${three} & 63")
        foreach(digit IN ITEMS ${high} ${low})
            string(SUBSTRING ${digits} ${digit} 1 character)
            string(APPEND base64 ${character})
        endforeach()
    endforeach()
    string(REGEX REPLACE ".$" "=" base64 ${base64})
    set(${result} "'sha256-${base64}'" PARENT_SCOPE)
endfunction()
