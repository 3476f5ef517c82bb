# SPDX-License-Identifier: BSD-3-Clause
# The deepest stack below one function, from the call graphs that GCC writes with -fcallgraph-info=su,da: its bytes, then
# the calls that lead there, one a line with the bytes of each. What lies outside the graphs costs nothing here.
#
#   awk -v root=IP_ConfigCallBack -f deepest_stack.awk *.ci
#
# A call through a pointer counts as one to every function that the rule of its caller matches. A caller without a rule,
# a stack that is not known at compile time and a recursion are errors: the figure would be none.

BEGIN {
    # caller's declaration -> declarations of what it may call, anywhere or within its own file
    rule["ipmib::serve"] = "(uint32_t, MorRequest*, MorReply*)"
    rule["ip_IpIfStats_Get"] = "uint32_t ipmib::requireIp"
    ruleWithin["nextInterfaceRow"] = "GetByIndex(uint32_t, "
}

function fail(message) {
    print "deepest_stack: " message > "/dev/stderr"
    failed = 1
    exit 1
}

# The text of an attribute of the line: name: "text".
function attribute(name,    start, rest) {
    start = index($0, name ": \"")
    if (!start) return ""
    rest = substr($0, start + length(name) + 3)
    return substr(rest, 1, index(rest, "\"") - 1)
}

/^graph:/ {
    file = attribute("title")
}

/^node:/ {
    title = attribute("title")
    label = attribute("label")
    if (match(label, /[0-9]+ bytes \([a-z,]+\)/)) {
        split(substr(label, RSTART, RLENGTH), size, " ")
        if (size[3] != "(static)") fail(title " has a stack of " size[1] " bytes and more")
        stack[title] = size[1]
        fileOf[title] = file
        declaration[title] = substr(label, 1, index(label, "\\n") - 1)
    }
}

/^edge:/ {
    from = attribute("sourcename")
    to = attribute("targetname")
    if (to == "__indirect_call") indirect[from] = 1
    else calls[from] = calls[from] SUBSEP to
}

# Whether a function calls another by its name, itself or through others.
function reaches(title, other,    parts, count, i) {
    if (title == other) return 1
    count = split(calls[title], parts, SUBSEP)
    for (i = 1; i <= count; i++) {
        if (parts[i] != "" && reaches(parts[i], other)) return 1
    }
    return 0
}

# What leads back to the caller by name cannot be meant.
function mayCall(from, callee, what) {
    return index(declaration[callee], what) && !reaches(callee, from)
}

# Adds what a call through a pointer may reach.
function resolve(from,    caller, callee, found) {
    for (callee in declaration) {
        found = 0
        for (caller in rule) found += index(declaration[from], caller) && mayCall(from, callee, rule[caller])
        for (caller in ruleWithin) {
            found += index(declaration[from], caller) && fileOf[from] == fileOf[callee] &&
                     mayCall(from, callee, ruleWithin[caller])
        }
        if (!found) continue
        calls[from] = calls[from] SUBSEP callee
        resolved[from] = 1
    }
    if (!(from in resolved)) fail("no rule says what " from " calls through a pointer")
}

function depth(title,    parts, count, i, deepest, below) {
    if (title in known) return known[title]
    if (title in open) fail(title " calls itself")
    open[title] = 1
    count = split(calls[title], parts, SUBSEP)
    for (i = 1; i <= count; i++) {
        if (!(parts[i] in stack)) continue
        below = depth(parts[i])
        if (below > deepest) {
            deepest = below
            deepestCall[title] = parts[i]
        }
    }
    delete open[title]
    return known[title] = stack[title] + deepest
}

END {
    if (failed) exit 1
    if (!(root in stack)) fail("no graph holds " root)
    for (from in indirect) resolve(from)
    print depth(root)
    for (title = root; title != ""; title = deepestCall[title]) {
        sub(/\(.*/, "", declaration[title])
        sub(/^.* /, "", declaration[title])
        print declaration[title], stack[title]
    }
}
