# Tells in a line each what dbus-monitor saw between one host and ConnMan.
#   -v host=UNIQUE-NAME -v connman=UNIQUE-NAME

function Field(name,    found) {
    if (!match(header, "(^|[ ;])" name "=[^ ;]*"))
        return ""
    found = substr(header, RSTART, RLENGTH)
    sub(/^[ ;]?[a-z_]*=/, "", found)
    return found
}

function Last(path) {
    sub(/.*\//, "", path)
    return path
}

function Tell(line) {
    if (line != told && told != "")
        Flush()
    told = line
    times++
}

function Flush() {
    if (told != "")
        print "      " told (times > 1 ? "  (" times " times)" : "")
    told = ""
    times = 0
}

function TellCall(member, path) {
    members[Field("sender") " " Field("serial")] = member
    if (Field("sender") == host && Field("destination") == "net.connman")
        Tell("host    -> ConnMan  " member (path == "" ? "" : "  " path))
    else if (Field("sender") == connman && Field("destination") == host)
        Tell("ConnMan -> host     " member "  " keys)
}

function TellReturn(member) {
    if (Field("destination") == host && member == "GetServices")
        Tell("ConnMan -> host     answer: " structs " services")
    else if (Field("destination") == host && member == "GetTechnologies")
        Tell("ConnMan -> host     answer: " structs " technologies")
    else if (Field("sender") == host)
        Tell("host    -> ConnMan  answer: " (values == "" ? "nothing" : values))
}

function TellSignal(member) {
    if (member == "PropertyChanged" && property == "State" && Field("path") ~ /service/)
        Tell("ConnMan -> all      " Last(Field("path")) " is now: " value)
    else if (member == "ServicesChanged")
        Tell("ConnMan -> all      ServicesChanged")
}

function TellMessage() {
    if (header ~ /^method call/)
        TellCall(Field("member"), Last(Field("path")))
    else if (header ~ /^method return/)
        TellReturn(members[Field("destination") " " Field("reply_serial")])
    else if (header ~ /^signal/ && Field("sender") == connman)
        TellSignal(Field("member"))
}

# The passphrase itself is nobody's business.
function AddValue(text) {
    if (key == "Passphrase")
        text = text == "" ? "(empty)" : "(" length(text) " characters)"
    values = values (values == "" ? "" : ", ") key " " text
}

/^(method call|method return|error|signal) / {
    TellMessage()
    header = $0
    keys = values = property = value = key = ""
    structs = 0
    next
}
/^      struct / { structs++ }
/^   string "/ { if (property == "") { property = $0; sub(/^ *string "/, "", property); sub(/"$/, "", property) } }
/^   variant +string "/ { value = $0; sub(/^ *variant *string "/, "", value); sub(/"$/, "", value) }
/^         string "/ {
    key = $0
    sub(/^ *string "/, "", key)
    sub(/"$/, "", key)
    keys = keys (keys == "" ? "" : ", ") key
}
/^         variant +string "/ {
    text = $0
    sub(/^ *variant *string "/, "", text)
    sub(/"$/, "", text)
    AddValue(text)
}
END {
    TellMessage()
    Flush()
}
