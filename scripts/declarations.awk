# Declarations without comments, from the public header and one family's list of exports:
#   awk -v family=NAME -v form=FORM -f declarations.awk include/morvenqvr.h FAMILY/exports.def
#
#   form=types        statuses, element types, records: what stands before the first group of functions, and every enum
#   form=public       the prototypes of the family's exports
#   form=functions    its functions in the slot being compiled
#   form=slot_tables  its tables, for tests
# Comments never reach the output, so that a change of the reference text rebuilds nothing.
FNR == NR {
    while (match($0, /\/\*/)) {
        before = substr($0, 1, RSTART - 1)
        rest = substr($0, RSTART + 2)
        while ((end = index(rest, "*/")) == 0)
            if ((getline rest) <= 0)
                break
        $0 = before substr(rest, end + 2)
    }
    gsub(/[ \t]+/, " ")
    sub(/^ /, "")
    sub(/ $/, "")
    # The header's own inline function is for users.
    if (/^static inline/)
        while (!/^}/ && (getline) > 0)
            ;
    if ($0 == "" || /^#/ || /^extern "C"/ || /^}$/)
        next
    statement = statement (statement == "" ? "" : " ") $0
    depth += gsub(/{/, "{") - gsub(/}/, "}")
    if (depth == 0 && statement ~ /;$/) {
        if (match(statement, /Morven_[A-Za-z0-9_]+ ?\(/)) {
            name = substr(statement, RSTART + 7, RLENGTH - 7)
            sub(/ ?\($/, "", name)
            prototype[name] = statement
        } else
            types = types statement "\n"
        statement = ""
    }
    next
}
/^QVR_[A-Z]+\(/ {
    split($0, part, /[()]/)
    names[++count] = part[2]
    kinds[count] = part[1]
}
END {
    print "#pragma once"
    if (form == "types")
        print "#include <stdint.h>"
    else if (form == "public")
        print "#include \"frame/types.h\""
    else
        print "#include \"" family "/public.h\""
    if (form == "functions")
        print "#include \"frame/slot.h\""
    if (form == "slot_tables")
        print "#include \"frame/slots.h\""
    print "#ifdef __cplusplus\nextern \"C\" {\n#endif"
    if (form == "types")
        printf "%s", types
    for (i = 1; i <= count; i++) {
        if (!(names[i] in prototype)) {
            print "declarations.awk: no prototype of " names[i] > "/dev/stderr"
            failed = 1
        } else if (form == "public")
            print prototype[names[i]]
        else if (form == "functions" && kinds[i] != "QVR_PLAIN")
            print "QVR_HIDDEN decltype(Morven_" names[i] ") " (kinds[i] == "QVR_OWN" ? "SLOT(" : "SLOT_SHARED(") names[i] ");"
        else if (form == "slot_tables" && kinds[i] != "QVR_PLAIN")
            print "extern decltype(&Morven_" names[i] ") const qvrTable_" names[i] "[qvrSlotCount];"
    }
    print "#ifdef __cplusplus\n}\n#endif"
    exit failed
}
