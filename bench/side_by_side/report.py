# SPDX-License-Identifier: BSD-3-Clause
"""Makes tables of what was measured."""
import platform
import statistics
import subprocess

# Why we lose where we lose, by table.
FRESH = "each packet reads the kernel's counters, snmpd answers from a cache"
REASONS = {
    "ipSystemStatsTable": FRESH,
    "ipIfStatsTable": FRESH,
    "icmpStatsTable": FRESH,
    "icmpMsgStatsTable": FRESH,
    "ipDefaultRouterTable": "answers reach into the ICMP tables behind it, whose counters each packet reads",
    "ipAddressTable": "each row walks the prefixes up to its own, without a cache",
}
SAME = 1.1  # under 10 % is no difference


def row(*cells):
    return "| " + " | ".join(str(cell) for cell in cells) + " |"


def header(*cells):
    return row(*cells) + "\n" + row(*("---" if i == 0 else "--:" for i in range(len(cells))))


def grouped(number):
    return f"{number:,}"


def size_of(state):
    size = f"{grouped(state['neighbours'])} / {grouped(state['addresses'])} / {state['interfaces']}"
    return size + (f", {grouped(state['routes'])} routes" if state["routes"] else "")


def machine():
    with open("/proc/cpuinfo", encoding="ascii") as file:
        model = next((line.split(":")[1].strip() for line in file if line.startswith("model name")), platform.machine())
    try:
        peer = subprocess.run(["dpkg-query", "-Wf", "${Version}", "snmpd"], capture_output=True, text=True, check=False)
        peer = peer.stdout
    except OSError:
        peer = ""
    return f"{model}, Linux {platform.release()}" + (f", snmpd {peer}" if peer else "")


def walk_rows(result, agents):
    medians = lambda numbers, key: statistics.median(each[key] for each in numbers)  # noqa: E731
    for table, ways in result["walks"].items():
        for way, measured in ways.items():
            cost = {agent: medians(numbers, "us_a_variable") for agent, numbers in measured.items()}
            ours, peer, floor = cost.get("ipmibd"), cost.get("snmpd"), cost.get("floor")
            cells = [table, way, grouped(int(medians(measured["ipmibd"], "variables"))), f"{ours:.2f}"]
            if "snmpd" in agents:
                cells += [f"{peer:.2f}", f"{ours / peer:.2f}"]
            if "floor" in agents:
                cells += [f"{floor:.2f}", f"{ours - floor:.2f}"] if floor else ["", ""]
            for agent in agents:
                if agent not in ("ipmibd", "snmpd", "floor"):
                    cells.append(f"{cost[agent]:.2f}" if agent in cost else "")
            cells.append(f"{medians(measured['ipmibd'], 'seconds_a_walk') * 1000:.1f}")
            if "snmpd" in agents:
                cells.append(note(table, ours / peer))
            yield row(*cells)


def note(table, ratio):
    if ratio <= SAME:
        return ""
    return "slower" + (": " + REASONS[table] if table in REASONS else "")


def walk_columns(agents):
    names = ["table", "walk", "variables", "ours"]
    names += ["snmpd", "ours/snmpd"] if "snmpd" in agents else []
    names += ["floor", "own share"] if "floor" in agents else []
    names += [agent for agent in agents if agent not in ("ipmibd", "snmpd", "floor")]
    names += ["ms a walk, ours"]
    return names + (["note"] if "snmpd" in agents else [])


def walks(results, all_agents):
    lines = []
    for result in results:
        measured = {agent for ways in result["walks"].values() for each in ways.values() for agent in each}
        agents = [agent for agent in all_agents if agent in measured]
        lines += ["", f"**{size_of(result['state'])}** (neighbours / addresses / interfaces)", "",
                  header(*walk_columns(agents)), *walk_rows(result, agents)]
    return lines


def memory(results, agents):
    lines = ["", "Peak memory (MB):", ""]
    ratio = ["ours/snmpd"] if "snmpd" in agents else []
    lines.append(header("neighbours / addresses / interfaces", *agents, *ratio))
    for result in results:
        peaks = {agent: statistics.median(numbers) for agent, numbers in result["memory"].items() if numbers}
        cells = [f"{peaks[agent]:.1f}" if agent in peaks else "" for agent in agents]
        lines.append(row(size_of(result["state"]), *cells,
                         *([f"{peaks['ipmibd'] / peaks['snmpd']:.2f}" if "snmpd" in peaks else ""] if ratio else [])))
    return lines


def gets(result, agents):
    lines = ["", f"Single GETs, 100 a second, at {size_of(result['state'])} (ms from the moment a request was due):", "",
             header("table", *(f"{agent} {what}" for agent in agents for what in ("p50", "p99", "worst")))]
    for table in result[agents[0]]["gets"]:
        numbers = [result[agent]["gets"][table] for agent in agents]
        lines.append(row(table, *(f"{each[key]:.2f}" for each in numbers for key in ("p50_ms", "p99_ms", "worst_ms"))))
        for agent, each in zip(agents, numbers):
            if each["unanswered"]:
                lines.append(row(f"{agent}: {each['unanswered']} of {each['gets']} not answered", *[""] * 3 * len(agents)))
    return lines


def staleness(result, agents):
    lines = ["", "From the kernel's change to the first right answer (ms):", "",
             header("change", *(f"{agent} {what}" for agent in agents for what in ("changes", "median", "max")))]

    def add(name, key):
        for kind in next(result[agent][key] for agent in agents if result[agent][key]):
            cells = []
            for agent in agents:
                each = result[agent][key] and result[agent][key][kind]
                if not each:
                    cells += ["", "", ""]
                elif each["changes"] == 0:
                    cells += [0, "not within 90 s", ""]
                else:
                    unseen = f", {each['unseen']} not within the time" if each["unseen"] else ""
                    cells += [f"{each['changes']}{unseen}", f"{each['median_ms']:.2f}", f"{each['max_ms']:.2f}"]
            lines.append(row(name.format(kind), *cells))

    add("{}", "staleness")
    add("{}, right after 20,000 neighbours came or went", "staleness_burst")
    return lines


def idle(result, agents):
    return ["", "Processor time in 20 s in which nobody asks: " +
            ", ".join(f"{agent} {result[agent]['idle_ms']:.1f} ms" for agent in agents) + "."]


def tables(results, options):
    agents = options.agents
    timed = [agent for agent in agents if agent in ("ipmibd", "snmpd")]
    lines = [f"{machine()}; medians of {options.rounds} rounds.", "",
             "Walks, processor time of the agent in us a variable:"]
    lines += walks(results, agents) + memory(results, agents)
    for result in results:
        if timed[0] in result:
            lines += gets(result, timed) + idle(result, timed) + staleness(result, timed)
    return "\n".join(lines)

