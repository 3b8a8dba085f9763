# Makes the man page or a shell's completions out of what "orvelprobe --help" prints, so that none of
# them can name other options than the command has.
#   awk -v to=man|bash|zsh|fish -v version=X.Y.Z -f from_help.awk HELP [man: TAIL]

BEGIN {
    # What a value can be, by its name in the help text. PATH is completed as a file.
    values["LEVEL"] = "verbose debug info warn error silent"
    values["OPTS"] = "latency= short= error-at= size=unknown"
    values["KEY=VALUE"] = "mm.enable.orvel_parser= vendor.audio.parser.ip.buffer.size="
}

FNR == 1 { ++file }

file == 2 {  # what the help text does not say
    tail = tail $0 "\n"
    next
}

/^Usage: / {
    aboutEnded = 1
    next
}

!aboutEnded {
    about = about (about == "" ? "" : " ") $0
    next
}

/^[A-Z].*:$/ {
    section = substr($0, 1, length($0) - 1)
    next
}

# "  -V,--version   Text", "  --track N   Text": the text may begin one blank after the value's name.
/^  -/ {
    ++count
    line = substr($0, 3)
    match(line, /^[^ ]+/)
    names = substr(line, 1, RLENGTH)
    line = substr(line, RLENGTH + 1)
    if (match(line, /^ [A-Z][A-Z=:\[\]]*( |$)/)) {
        value[count] = substr(line, 2, RLENGTH - 1)
        sub(/ $/, "", value[count])
        line = substr(line, RLENGTH + 1)
    }
    short[count] = names ~ /,/ ? substr(names, 1, index(names, ",") - 1) : ""
    long[count] = names
    sub(/.*,/, "", long[count])
    sub(/^ +/, "", line)
    text[count] = line
    group[count] = section
    next
}

# Terms of the sections at the end, then the lines that go on.
/^  [^ ]/ {
    ++count
    line = substr($0, 3)
    match(line, /^[^ ]+/)
    term[count] = substr(line, 1, RLENGTH)
    line = substr(line, RLENGTH + 1)
    sub(/^ +/, "", line)
    text[count] = line
    group[count] = section
    next
}

/^ +[^ ]/ {
    line = $0
    sub(/^ +/, "", line)
    text[count] = text[count] (text[count] == "" ? "" : " ") line
}

END {
    if (count == 0) exit 1
    if (to == "man") man()
    else if (to == "bash") bash()
    else if (to == "zsh") zsh()
    else if (to == "fish") fish()
    else exit 1
}

function roff(words) {
    gsub(/\\/, "\\e", words)
    gsub(/-/, "\\-", words)
    gsub(/^[.']/, "\\\\\\&&", words)
    return words
}

function man(    i, last, title) {
    printf ".TH ORVELPROBE 1 \"\" \"orvelprobe %s\" \"User Commands\"\n", version
    print ".SH NAME\norvelprobe \\- show what the extractor plug\\-in makes of media files"
    print ".SH SYNOPSIS\n.B orvelprobe\n[\\fIOPTIONS\\fR] \\fIFILE\\fR..."
    print ".SH DESCRIPTION\n" roff(about)
    print "A folder as \\fIFILE\\fR means every file below it."
    print ".SH OPTIONS"
    for (i = 1; i <= count; ++i) {
        if (group[i] != last) {
            last = group[i]
            title = last
            sub(/,.*/, "", title)
            if (i in term) {
                print ".SH " quoted(toupper(title))
                if (title != last) print roff(capital(substr(last, length(title) + 3))) ":"
            } else {
                print ".SS " quoted(roff(title))
            }
        }
        print ".TP"
        if (i in term) print "\\fB" roff(term[i]) "\\fR"
        else print (short[i] == "" ? "" : "\\fB" roff(short[i]) "\\fR, ") "\\fB" roff(long[i]) \
                "\\fR" (i in value ? " \\fI" roff(value[i]) "\\fR" : "")
        print roff(text[i])
    }
    printf "%s", tail
}

function capital(words) { return toupper(substr(words, 1, 1)) substr(words, 2) }

function quoted(words) { return "\"" words "\"" }

function isFile(i) { return value[i] == "PATH" }

function bash(    i, options, files, free) {
    for (i = 1; i <= count; ++i) {
        if (i in term) continue
        options = options " " long[i] (i in value ? "=" : "") (short[i] == "" ? "" : " " short[i])
    }
    print "# bash completion for orvelprobe\n"
    print "_orvelprobe() {"
    print "    local cur prev words cword split"
    print "    _init_completion -s || return"
    print "    case $prev in"
    for (i = 1; i <= count; ++i) {
        if (!(i in value)) continue
        if (isFile(i)) files = files "|" long[i]
        else if (!(value[i] in values)) free = free "|" long[i]
        else {
            print "    " long[i] ")"
            print "        COMPREPLY=($(compgen -W " quoted(values[value[i]]) " -- \"$cur\"))"
            print "        [[ ${COMPREPLY-} != *= ]] || compopt -o nospace"
            print "        return\n        ;;"
        }
    }
    if (files != "") print "    " substr(files, 2) ")\n        _filedir\n        return\n        ;;"
    if (free != "") print "    " substr(free, 2) ")\n        return\n        ;;"
    print "    esac"
    print "    $split && return"
    print "    if [[ $cur == -* ]]; then"
    print "        COMPREPLY=($(compgen -W " quoted(substr(options, 2)) " -- \"$cur\"))"
    print "        [[ ${COMPREPLY-} != *= ]] || compopt -o nospace"
    print "    else\n        _filedir\n    fi"
    print "} &&\n    complete -F _orvelprobe orvelprobe"
}

# Up to the first full stop or semicolon, for a list of options in one line each.
function brief(words) {
    sub(/[;:.] .*/, "", words)
    gsub(/'/, "", words)
    return words
}

function zsh(    i, names, words, action) {
    print "#compdef orvelprobe\n\n_arguments -S \\"
    for (i = 1; i <= count; ++i) {
        if (i in term) continue
        words = brief(text[i])
        gsub(/[\[\]]/, "\\\\&", words)
        words = "[" words "]"
        if (i in value) {
            action = isFile(i) ? "_files" : value[i] in values ? "(" values[value[i]] ")" : " "
            names = value[i]
            gsub(/:/, "\\:", names)
            words = "=" words ":" names ":" action
        }
        if (short[i] != "") print "    '(- *)'{" short[i] "," long[i] "}'" words "' \\"
        else print "    '" (text[i] ~ /repeatable/ ? "*" : "") long[i] words "' \\"
    }
    print "    '*:FILE:_files'"
}

function fish(    i, line) {
    print "# fish completion for orvelprobe"
    for (i = 1; i <= count; ++i) {
        if (i in term) continue
        line = "complete -c orvelprobe -l " substr(long[i], 3)
        if (short[i] != "") line = line " -s " substr(short[i], 2)
        if (i in value) {
            line = line (isFile(i) ? " -r -F" : " -x")
            if (value[i] in values) line = line " -a '" values[value[i]] "'"
        }
        print line " -d '" brief(text[i]) "'"
    }
}
