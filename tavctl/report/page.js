"use strict";
(() => {
    // What the data's short names mean stands in tavctl/report/reportData.h.
    const data = JSON.parse(document.getElementById("data").textContent);
    const machines = data.machines;
    const kMostListed = 150;   // entries of the list at a time
    const kMostProblems = 300; // rows of the overview at a time

    const byId = (id) => document.getElementById(id);
    const search = byId("search"), list = byId("list"), view = byId("machine");

    // An element with a class, and texts or elements inside: never markup.
    const make = (tag, name, ...inside) => {
        const element = document.createElement(tag);
        if (name) element.className = name;
        element.append(...inside.filter((each) => each !== null && each !== ""));
        return element;
    };
    const counted = (count, one, many) => `${count.toLocaleString("en")} ${count === 1 ? one : many}`;

    // The text with what was searched for marked.
    const marked = (text) => {
        const words = wordsOf();
        const whole = make("span");
        const low = text.toLowerCase();
        let at = 0;
        while (words.length && low.length === text.length) {
            let next = -1, word = "";
            for (const each of words) {
                const found = low.indexOf(each, at);
                if (found >= 0 && (next < 0 || found < next)) [next, word] = [found, each];
            }
            if (next < 0) break;
            whole.append(text.slice(at, next), make("mark", "", text.slice(next, next + word.length)));
            at = next + word.length;
        }
        whole.append(text.slice(at));
        return whole;
    };

    const kSpeeds = ["", "2.5", "5", "8", "16", "32", "64"];
    const isDegraded = (link) => Boolean(link) && link[4] === 1;
    const linkText = (link) => {
        if (!link) return "";
        const [width, ableWidth, speed, ableSpeed] = link;
        const part = (now, able, text) => !now ? "" : able > now ? `${text(now)} of ${text(able)}` : text(now);
        return [part(width, ableWidth, (n) => `x${n}`),
                part(speed, ableSpeed, (n) => kSpeeds[n] || `speed ${n}`) + (speed ? " GT/s" : "")]
            .filter(Boolean).join(" ");
    };
    const modelOf = (box) => data.models[box.m];
    const nameOf = (box) => box.n + (box.s ? "" : "*");
    const connectorName = (connector) =>
        connector.l.length ? connector.l.join(" ") : "without a label";

    // What a connector has in it, in words that do not depend on bus numbers.
    const contents = (machine, connector) =>
        connector.b.map((index) => `${machine.b[index].n} ${modelOf(machine.b[index])}`)
            .concat(connector.f.map((each) => data.texts[each[1]]));

    // Of two recordings of one machine: what the later one, `now`, has that `before` had not, and
    // the other way round. A box is the same where name and model are.
    const differencesOf = (before, now) => {
        const keyOf = (box) => `${box.n}\n${modelOf(box)}`;
        const old = new Map(before.b.map((box) => [keyOf(box), box]));
        const result = {boxes: new Map(), gone: [], count: 0};
        for (const box of now.b) {
            const was = old.get(keyOf(box));
            old.delete(keyOf(box));
            const words = [];
            const connectors = new Map();
            if (!was) words.push("new");
            else {
                if (was.p !== box.p) words.push(`moved, was at ${was.p}`);
                else if (was.a !== box.a) words.push(`address was ${was.a}`);
                if (linkText(was.u) !== linkText(box.u)) words.push(`link was ${linkText(was.u) || "unknown"}`);
                box.k.forEach((connector, index) => {
                    const other = was.k[index];
                    if (!other) return;
                    const had = contents(before, other), has = contents(now, connector);
                    const said = had.filter((each) => !has.includes(each)).map((each) => `gone: ${each}`)
                        .concat(has.filter((each) => !had.includes(each)).map((each) => `new: ${each}`));
                    if (!said.length && linkText(other.w) !== linkText(connector.w))
                        said.push(`link was ${linkText(other.w) || "down"}`);
                    if (said.length) connectors.set(index, said);
                });
            }
            if (words.length || connectors.size) result.boxes.set(box, {words, connectors});
        }
        result.gone = [...old.values()];
        result.count = result.boxes.size + result.gone.length;
        return result;
    };

    // Everything that is asked of a machine again and again.
    const latest = new Map(); // by a machine's name, its recordings in order
    machines.forEach((machine, index) => {
        machine.index = index;
        if (!latest.has(machine.n)) latest.set(machine.n, []);
        latest.get(machine.n).push(machine);
        const links = machine.b.flatMap((box) => [box.u, ...box.k.map((connector) => connector.w)]);
        machine.degraded = links.filter(isDegraded).length;
        machine.text = [machine.n, machine.r,
            ...machine.b.flatMap((box) => [box.n, modelOf(box), box.a, box.p,
                ...box.k.flatMap((connector) => connector.f.flatMap((each) => [each[0], data.texts[each[1]], data.ids[each[1]]]))]),
            ...machine.g.flat()].join("\n").toLowerCase();
    });
    for (const all of latest.values())
        all.forEach((machine, at) => {
            machine.before = at ? all[at - 1] : null;
            machine.changes = at && !machine.f && !all[at - 1].f ? differencesOf(all[at - 1], machine).count : 0;
        });

    const kOnly = {
        degraded: (machine) => machine.degraded > 0,
        absent: (machine) => machine.g.length > 0,
        failed: (machine) => Boolean(machine.f),
        changed: (machine) => machine.changes > 0,
    };
    const only = () => [...document.querySelectorAll("#only input:checked")].map((each) => each.value);
    const wordsOf = () => search.value.toLowerCase().split(/\s+/)
        .map((word) => word.replace(/^0000:(?=..:)/, "")).filter(Boolean); // the domain of all

    let shown = machines, chosen = -1, compared = null, most = kMostListed;

    const marksOf = (machine) => [
        machine.f ? "could not be read" : "",
        machine.degraded ? counted(machine.degraded, "degraded link", "degraded links") : "",
        machine.g.length ? counted(machine.g.length, "absent box", "absent boxes") : "",
        machine.changes ? counted(machine.changes, "change", "changes") : "",
    ].filter(Boolean);

    const renderList = () => {
        const entries = shown.slice(0, most).map((machine) => {
            const entry = make("li", "", make("b", "", marked(machine.n)),
                make("span", "path", marked(machine.r)));
            const marks = marksOf(machine);
            entry.append(make("span", "soft", counted(machine.b.length, "box", "boxes") + (marks.length ? ", " : "")),
                make("span", machine.f || machine.degraded || machine.g.length ? "bad" : "change", marks.join(", ")));
            entry.id = `entry-${machine.index}`;
            entry.setAttribute("role", "option");
            entry.setAttribute("aria-selected", String(machine.index === chosen));
            entry.tabIndex = -1;
            entry.dataset.index = machine.index;
            return entry;
        });
        if (shown.length > most) {
            const more = make("li", "more soft", `${(shown.length - most).toLocaleString("en")} more: show them, or search`);
            more.setAttribute("role", "option");
            more.tabIndex = -1;
            more.dataset.more = "1";
            entries.push(more);
        }
        list.replaceChildren(...entries);
        const first = list.querySelector("[aria-selected=true]") || list.firstElementChild;
        if (first) first.tabIndex = 0;
        byId("found").textContent = shown.length === machines.length
            ? counted(machines.length, "recording", "recordings")
            : `${shown.length.toLocaleString("en")} of ${counted(machines.length, "recording", "recordings")}`;
    };

    const find = () => {
        const words = wordsOf(), wanted = only();
        shown = machines.filter((machine) => wanted.every((each) => kOnly[each](machine)) &&
            words.every((word) => machine.text.includes(word)));
        most = kMostListed;
        renderList();
        render();
    };

    const renderConnector = (machine, connector, said) => {
        const isEmpty = !connector.f.length && !connector.b.length;
        const element = make("li", "connector", make("span", "label", connectorName(connector)));
        if (connector.x) {
            element.classList.add("degraded");
            element.append(make("span", "bad", "port missing"));
        } else if (isEmpty) {
            element.classList.add("empty");
            element.append("empty");
        }
        if (isDegraded(connector.w)) {
            element.classList.add("degraded");
            element.append(make("span", "bad", `runs ${linkText(connector.w)}`));
        } else if (connector.w) {
            element.append(make("span", "soft", linkText(connector.w)));
        }
        const inside = make("ul");
        for (const index of connector.b)
            inside.append(make("li", "", make("b", "", marked(nameOf(machine.b[index]))), " ",
                marked(modelOf(machine.b[index]))));
        for (const each of connector.f)
            inside.append(make("li", "", marked(data.texts[each[1]]), " ", make("span", "soft", marked(each[0]))));
        if (inside.firstChild) element.append(inside);
        for (const each of said || []) element.append(make("div", "change", each));
        if (said) element.classList.add("changed");
        return element;
    };

    const renderBox = (machine, box, change) => {
        const title = make("div", "title", make("h3", "", marked(nameOf(box))), marked(modelOf(box)),
            make("span", "soft", marked(box.a)));
        if (box.i) title.append(make("span", "soft", `in ${box.i}`));
        if (box.u)
            title.append(make("span", isDegraded(box.u) ? "bad" : "soft",
                `${isDegraded(box.u) ? "link upstream runs" : "upstream"} ${linkText(box.u)}`));
        const plate = make("ul", "plate");
        box.k.forEach((connector, index) =>
            plate.append(renderConnector(machine, connector, change && change.connectors.get(index))));
        const element = make("article", "box", title);
        if (change) {
            element.classList.add("changed");
            if (change.words.includes("new")) element.classList.add("new");
            if (change.words.length) element.append(make("div", "change", change.words.join(", ")));
        }
        if (box.k.length) element.append(plate);
        return element;
    };

    const renderSide = (machine, changes) => {
        const side = make("section", "");
        const head = make("div", "head", make("h2", "", marked(machine.n)),
            ...marksOf(machine).map((each) => make("span", /change/.test(each) ? "change" : "bad", each)),
            make("span", "path", marked(machine.r)));
        side.append(head);
        if (machine.x) side.append(make("p", "soft", machine.x));
        if (machine.f) {
            side.append(make("p", "failed", machine.f));
            return side;
        }
        for (const box of machine.b) side.append(renderBox(machine, box, changes && changes.boxes.get(box)));
        for (const box of changes ? changes.gone : [])
            side.append(make("p", "absent", make("b", "", box.n), ` ${modelOf(box)} `,
                make("span", "bad", "is gone"), make("span", "soft", ` was at ${box.a}`)));
        for (const [name, model, path, place] of machine.g)
            side.append(make("p", "absent", make("b", "", marked(name)), " ", marked(model), " ",
                make("span", "bad", "is not there"),
                make("span", "soft", place ? `, stood below ${place}` : `, stood at ${path}`)));
        if (!machine.b.length && !machine.g.length) side.append(make("p", "soft", "No described box is there."));
        if (machine.b.some((box) => !box.s))
            side.append(make("p", "soft", "Names with * would be given, and are not stored."));
        return side;
    };

    const renderMachine = (machine) => {
        const others = latest.get(machine.n).filter((each) => each !== machine);
        const elements = [];
        if (others.length) {
            const choose = make("select", "");
            choose.id = "compare";
            choose.append(make("option", "", "nothing"));
            choose.firstChild.value = "";
            for (const each of others) {
                const option = make("option", "", each.r);
                option.value = each.index;
                choose.append(option);
            }
            choose.value = compared ? compared.index : "";
            choose.addEventListener("change", () => {
                go(machine.index, choose.value === "" ? null : machines[choose.value]);
                byId("compare").focus();
            });
            const label = make("label", "", "Compare with ");
            label.append(choose);
            elements.push(make("p", "choose", label));
        }
        const sides = make("div", compared ? "sides" : "");
        if (compared) {
            const [before, now] = compared.index < machine.index ? [compared, machine] : [machine, compared];
            const changes = !before.f && !now.f ? differencesOf(before, now) : null;
            sides.append(renderSide(before, null), renderSide(now, changes));
            if (changes && !changes.count) elements.push(make("p", "soft", "The two recordings show the same."));
        } else {
            sides.append(renderSide(machine, null));
        }
        elements.push(sides);
        return elements;
    };

    // Without a machine: all that somebody should know of those that are shown.
    const renderOverview = () => {
        const rows = [];
        const row = (machine, what, text, name) => rows.length <= kMostProblems &&
            rows.push(make("tr", "", make("td", "", openButton(machine)), make("td", name, what), make("td", "", text)));
        for (const machine of shown) {
            if (machine.f) row(machine, "could not be read", machine.f, "bad");
            for (const box of machine.b) {
                if (isDegraded(box.u)) row(machine, "degraded link", `${box.n} upstream runs ${linkText(box.u)}`, "bad");
                for (const connector of box.k)
                    if (isDegraded(connector.w))
                        row(machine, "degraded link", `${box.n} connector ${connectorName(connector)} runs ${linkText(connector.w)}`, "bad");
            }
            for (const [name, model, path, place] of machine.g)
                row(machine, "absent box", `${name} (${model}), stood ${place ? `below ${place}` : `at ${path}`}`, "bad");
            if (machine.changes)
                row(machine, "changed", `${counted(machine.changes, "box", "boxes")} since ${machine.before.r}`, "change");
        }
        if (!rows.length)
            return [make("p", "soft", shown.length ? "Nothing is absent, degraded or changed. Choose a recording to see its boxes."
                                                   : "No recording has all of that.")];
        const more = rows.length > kMostProblems;
        const head = make("thead", "", make("tr", "", ...["Machine", "What", "Where"].map((each) => make("th", "", each))));
        const table = make("table", "", head, make("tbody", "", ...rows.slice(0, kMostProblems)));
        return [make("h2", "", "What to look at"), table,
            more ? make("p", "soft more", `These are the first ${kMostProblems}; a search leaves fewer.`) : ""].filter(Boolean);
    };
    const openButton = (machine) => {
        const button = make("button", "link", machine.n);
        button.type = "button";
        button.addEventListener("click", () => { go(machine.index, machine.before && machine.changes ? machine.before : null); view.focus(); });
        return button;
    };

    const render = () =>
        view.replaceChildren(...(chosen < 0 ? renderOverview() : renderMachine(machines[chosen])));

    // The address of what is shown, so that going back and links work.
    const go = (index, other) => {
        const hash = index < 0 ? "" : `#${index}${other ? `,${other.index}` : ""}`;
        if (location.hash !== hash) location.hash = hash;
        show();
    };
    let shownHash = null;
    const show = () => {
        shownHash = location.hash;
        const [index, other] = location.hash.slice(1).split(",").map((each) => each === "" ? NaN : Number(each));
        chosen = Number.isInteger(index) && machines[index] ? index : -1;
        compared = chosen >= 0 && Number.isInteger(other) && machines[other] && machines[other].n === machines[chosen].n &&
            other !== chosen ? machines[other] : null;
        for (const entry of list.children) {
            const isChosen = Number(entry.dataset.index) === chosen;
            entry.setAttribute("aria-selected", String(isChosen));
            entry.tabIndex = isChosen ? 0 : -1;
        }
        if (!list.querySelector("[tabindex='0']") && list.firstElementChild) list.firstElementChild.tabIndex = 0;
        render();
    };

    const open = (entry) => {
        if (entry.dataset.more) {
            const at = most;
            most += kMostListed;
            renderList();
            list.children[at].focus();
            return;
        }
        go(Number(entry.dataset.index), null);
    };
    list.addEventListener("click", (event) => {
        const entry = event.target.closest("li");
        if (entry) open(entry);
    });
    list.addEventListener("keydown", (event) => {
        const entry = event.target.closest("li");
        const to = {ArrowDown: entry.nextElementSibling, ArrowUp: entry.previousElementSibling || search,
                    Home: list.firstElementChild, End: list.lastElementChild}[event.key];
        if (to) { event.preventDefault(); to.focus(); }
        if (event.key === "Enter" || event.key === " ") { event.preventDefault(); open(entry); }
    });
    search.addEventListener("input", find);
    search.addEventListener("keydown", (event) => {
        if (event.key === "ArrowDown" && list.firstElementChild) { event.preventDefault(); list.firstElementChild.focus(); }
        if (event.key === "Enter" && list.firstElementChild) { event.preventDefault(); open(list.firstElementChild); }
    });
    byId("only").addEventListener("change", find);
    document.addEventListener("keydown", (event) => {
        if (event.ctrlKey || event.altKey || event.metaKey) return;
        if (event.key === "/" && event.target !== search) { event.preventDefault(); search.focus(); search.select(); }
        if (event.key === "Escape") {
            if (event.target === search && search.value) { search.value = ""; find(); }
            else { go(-1, null); search.focus(); }
        }
    });
    // What go() has shown stays as it is, with the focus in it.
    window.addEventListener("hashchange", () => location.hash === shownHash || show());

    const boxes = machines.reduce((sum, machine) => sum + machine.b.length, 0);
    byId("counts").textContent = [counted(latest.size, "machine", "machines"),
        counted(machines.length, "recording", "recordings"), counted(boxes, "box", "boxes")].join(", ");
    renderList();
    if (machines.length === 1 && location.hash === "") location.replace("#0");
    show();
})();
