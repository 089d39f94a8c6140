# Reads config.ini as the tool does, and prints the ids of each supported hub: a line "VID PID" for
# SuperSpeed and one for high speed, four hexadecimal digits each. It is stricter about numbers: one
# that the tool would cut off or read as 0 ends the program with status 1, and the only line printed
# says why. Expects LC_ALL=C, so that characters are bytes.

function strip(text) {
    gsub(/^[ \t\r\013\014]+|[ \t\r\013\014]+$/, "", text)
    return text
}

function stop(why) {
    stopped = 1
    print "config.ini: " why
    exit 1
}

# The text before the first character that matches the bracket expression `marks`.
function upTo(text, marks) {
    return match(text, marks) ? substr(text, 1, RSTART - 1) : text
}

function valueOf(text) {
    if (text ~ /^"[^"]/)
        return upTo(substr(text, 2), "[\"]")
    if (text ~ /^\047[^\047]/)
        return upTo(substr(text, 2), "[\047]")
    text = strip(upTo(text, "[;#]"))
    return text == "\"\"" || text == "\047\047" ? "" : text
}

function take(line,    equals, key) {
    line = strip(line)
    if (line == "" || line ~ /^[#;]/)
        return
    if (line ~ /^\[.*\]$/) {
        section = tolower(strip(upTo(substr(line, 2), "[]]")))
        value[section] = ""
        return
    }
    equals = index(line, "=")
    if (equals < 2)
        stop("line " NR " is neither a section, a key with its value nor a comment")
    key = section ":" tolower(strip(substr(line, 1, equals - 1)))
    value[key] = valueOf(strip(substr(line, equals + 1)))
}

# The 16-bit number of a key; 0 if there is none.
function number(key,    text, base, digits, result, i) {
    text = tolower(value["support vid pid:" tolower(key)])
    if (text == "")
        return 0
    if (text ~ /^0x[0-9a-f]+$/) {
        base = 16
        digits = substr(text, 3)
    } else if (text ~ /^0[0-7]*$/) {
        base = 8
        digits = text
    } else if (text ~ /^[1-9][0-9]*$/) {
        base = 10
        digits = text
    } else {
        stop(key " is not a number")
    }
    result = 0
    for (i = 1; i <= length(digits); ++i) {
        result = result * base + index("0123456789abcdef", substr(digits, i, 1)) - 1
        if (result > 65535)
            stop(key " is more than 16 bits")
    }
    return result
}

{
    # A backslash at the end of a line joins the next one to it.
    line = joined $0
    joined = ""
    if (length(line) > 1022)
        stop("line " NR " is too long")
    sub(/[ \t\r\013\014]+$/, "", line)
    if (line ~ /\\$/)
        joined = substr(line, 1, length(line) - 1)
    else
        take(line)
}

END {
    if (stopped)
        exit 1
    for (i = 0; i < 64; ++i) {
        nn = sprintf("_%02X", i)
        vid = number("VID" nn)
        sspid = number("SSPID" nn)
        hspid = number("HSPID" nn)
        if (vid && sspid && hspid) {
            pids[1] = sspid
            pids[2] = hspid
            for (j = 1; j <= 2; ++j) {
                ids = sprintf("%04x %04x", vid, pids[j])
                if (!(ids in printed))
                    found[++count] = ids
                printed[ids] = 1
            }
        }
    }
    for (i = 1; i <= count; ++i)
        print found[i]
}
