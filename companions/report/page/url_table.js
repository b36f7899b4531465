// The table of all unique URLs: search, filters, order, pages, and what more there is to a URL.

const urlTable = (() => {
    let figures = null;
    let order = null;
    let types = [];
    let queriesOf = new Map(); // by row
    let found = [];
    const state = { words: [], filters: {}, column: "requests", direction: "descending", page: 0, size: 50 };
    const parts = {}; // elements that change

    const columns = [["requests", "Requests", "number"], ["method", "Method", ""], ["host", "Host", "logged"],
        ["url", "URL", "logged"], ["type", "Type", ""], ["transaction", "Transaction", "name"]];

    function tests() {
        const { type, ...texts } = state.filters;
        const list = Object.entries(texts).map(([name, value]) =>
            (row) => (row[urlColumns[name]] ?? "") === value);
        const ofType = types.find(([value]) => value === type);
        return ofType === undefined ? list : [ofType[2], ...list];
    }

    function find() {
        found = order.select(tests(), state.words, state.column, state.direction);
        state.page = 0;
        show();
    }

    const pages = () => Math.max(1, Math.ceil(found.length / state.size));

    function show() {
        const first = state.page * state.size;
        const shown = Array.from(found.slice(first, first + state.size));
        parts.body.replaceChildren(...shown.map(rowOf));
        if (shown.length === 0) {
            parts.body.append(make("tr", {}, make("td", { colspan: columns.length + 1, class: "note" },
                "No URL is like that.")));
        }
        let requests = 0;
        for (const at of found) {
            requests += figures.urls.rows[at][urlColumns.requests];
        }
        parts.status.textContent = `${countOf(found.length, "URL")} of ${number(figures.urls.rows.length)}, `
            + countOf(requests, "request");
        parts.page.textContent = shown.length === 0 ? "–"
            : `${number(first + 1)}–${number(first + shown.length)} of ${number(found.length)}`;
        parts.back.forEach((button) => setUseless(button, state.page === 0));
        parts.on.forEach((button) => setUseless(button, state.page + 1 >= pages()));
        setUseless(parts.reset, state.words.length === 0 && Object.keys(state.filters).length === 0);
        for (const [name, head] of Object.entries(parts.heads)) {
            head.setAttribute("aria-sort", name === state.column ? state.direction : "none");
        }
    }

    // Not disabled, so that whoever has just pressed it by a key stays there.
    const setUseless = (button, isUseless) => button.setAttribute("aria-disabled", String(isUseless));

    function badge(row) {
        const kind = urlKind(row);
        return make("span", { class: `badge ${kind.replace(" ", "-")}` }, kind);
    }

    function rowOf(at) {
        const row = figures.urls.rows[at];
        const host = row[urlColumns.host];
        const button = make("button", { type: "button", class: "more-of", "aria-expanded": "false",
            "aria-label": `More of ${row[urlColumns.url]}` }, queriesOf.has(at) ? "queries" : "more");
        const line = make("tr", { "data-row": at },
            make("td", { class: "number" }, number(row[urlColumns.requests])),
            make("td", {}, row[urlColumns.method]),
            make("td", { class: "logged host" }, host === "NA" ? "–" : host),
            make("th", { scope: "row", class: "logged url" }, row[urlColumns.url]),
            make("td", {}, badge(row)),
            make("td", { class: "name" }, row[urlColumns.transaction] ?? "–"),
            make("td", { class: "opener" }, button));
        button.addEventListener("click", () => {
            const isOpen = button.getAttribute("aria-expanded") === "true";
            button.setAttribute("aria-expanded", String(!isOpen));
            isOpen ? line.nextSibling.remove() : line.after(moreOf(at));
        });
        return line;
    }

    function moreOf(at) {
        const row = figures.urls.rows[at];
        const facts = [["Host", row[urlColumns.host]], ["URL", row[urlColumns.url]], ["Pattern that decided", row[urlColumns.pattern] ?? "none fits"],
            ["Body file", row[urlColumns.body] ?? "none"],
            ["Share of the listed requests", share(row[urlColumns.requests] / Math.max(listedRequests(), 1))]];
        const queries = queriesOf.get(at);
        return make("tr", { class: "more-row" }, make("td", { colspan: columns.length + 1 },
            make("dl", { class: "facts-of" }, facts.map(([name, fact]) =>
                [make("dt", {}, name), make("dd", { class: "logged" }, fact)])),
            queries === undefined ? null : queriesTable(queries, row[urlColumns.requests])));
    }

    function queriesTable({ different, most_frequent: list }, requests) {
        const title = different > list.length
            ? `The ${number(list.length)} most frequent of ${number(different)} queries`
            : `${countOf(different, "query", "queries")}`;
        return make("div", { class: "queries" }, make("h4", {}, title),
            plainTable(title, [{ title: "Query", kind: "logged" }, { title: "Requests", kind: "number" },
                { title: "Share", kind: "number" }],
            list.map(([query, count]) => [query === "" ? "(empty)" : query, number(count), share(count / requests)])));
    }

    const listedRequests = () => sumOf(figures.mix.methods.map((method) => method.requests));

    function sortBy(column) {
        const first = column === "requests" ? "descending" : "ascending";
        const other = first === "ascending" ? "descending" : "ascending";
        state.direction = state.column === column && state.direction === first ? other : first;
        state.column = column;
        find();
    }

    function head() {
        parts.heads = {};
        return make("thead", {}, make("tr", {}, columns.map(([name, title, kind]) => {
            parts.heads[name] = make("th", { scope: "col", class: kind === "number" ? kind : null },
                make("button", { type: "button", class: "sort", onclick: () => sortBy(name) }, title));
            return parts.heads[name];
        }), make("td", {})));
    }

    // Choices of a filter, at most so many that a list of them can be used.
    function filterChoice(name, label, options) {
        const most = 500;
        const select = choice(label, [["", "all"], ...options.slice(0, most)], (value) => {
            setFilter(name, value);
            find();
        });
        if (options.length > most) {
            const hint = `${number(options.length - most)} more: search for them`;
            select.lastElementChild.append(make("option", { disabled: true }, hint));
        }
        parts.filters[name] = select.lastElementChild;
        return select;
    }

    // A value of a filter may be any text of a log, so that "" of the list means "all" only here.
    function setFilter(name, value) {
        if (value === "") {
            delete state.filters[name];
        } else {
            state.filters[name] = value;
        }
    }

    function searchField() {
        let waiting = 0;
        parts.search = make("input", { type: "search", id: "search", placeholder: "words of host, URL, transaction, pattern",
            autocomplete: "off", spellcheck: "false", oninput: () => {
                clearTimeout(waiting);
                waiting = setTimeout(search, 120);
            } });
        return make("label", { class: "search" }, make("span", {}, "Search"), parts.search);
    }

    function search() {
        state.words = parts.search.value.toLowerCase().split(/\s+/).filter((word) => word !== "");
        find();
    }

    function controls() {
        const { mix } = figures;
        const named = (list) => list.map((part) => [part.name,
            `${part.name === "NA" ? "not in the log" : part.name} (${number(part.urls)})`]);
        parts.filters = {};
        parts.reset = make("button", { type: "button", onclick: () => showOnly({}, false) }, "Show all");
        const count = (test) => figures.urls.rows.reduce((sum, row, at) => sum + (test(row, at) ? 1 : 0), 0);
        const ofTypes = types.map(([value, text, test]) => [value, text, count(test)])
            .filter(([, , urls]) => urls > 0).map(([value, text, urls]) => [value, `${text} (${number(urls)})`]);
        return make("div", { class: "controls", role: "search", "aria-label": "URLs" }, searchField(),
            filterChoice("type", "Type", ofTypes),
            filterChoice("transaction", "Transaction", named(mix.transactions)),
            filterChoice("host", "Host", named(mix.hosts)),
            filterChoice("method", "Method", named(mix.methods)),
            parts.reset);
    }

    function pager() {
        const step = (label, text, target) => make("button", { type: "button", "aria-label": label, onclick: () => {
            state.page = Math.min(Math.max(target(), 0), pages() - 1);
            show();
        } }, text);
        parts.page = make("span", { class: "page", id: "page" });
        parts.back = [step("First page", "«", () => 0), step("Page before", "‹", () => state.page - 1)];
        parts.on = [step("Next page", "›", () => state.page + 1), step("Last page", "»", () => pages() - 1)];
        const size = choice("Rows", [25, 50, 100, 500].map((rows) => [String(rows), number(rows)]), (value) => {
            state.size = Number(value);
            state.page = 0;
            show();
        });
        size.lastElementChild.value = String(state.size);
        return make("div", { class: "pager" }, parts.back, parts.page, parts.on, size);
    }

    // Shows the rows of these filters alone.
    function showOnly(filters, moves = true) {
        state.filters = { ...filters };
        for (const [name, select] of Object.entries(parts.filters)) {
            select.value = filters[name] ?? "";
        }
        parts.search.value = "";
        search();
        if (moves) {
            byId("urls").scrollIntoView();
            parts.search.focus({ preventScroll: true });
        }
    }

    function start(all) {
        figures = all;
        order = new UrlOrder(all.urls.rows);
        types = urlTypes(all);
        queriesOf = new Map(all.queries.of_urls.map((queries) => [queries.url, queries]));
        byId("urls-lead").append(`The rows of url.list: ${countOf(all.urls.rows.length, "URL")}. `, queriesText(all));
        parts.status = make("p", { class: "status", role: "status", id: "found" });
        parts.body = make("tbody");
        byId("url-table").append(controls(), parts.status,
            make("div", { class: "scroller", tabindex: "0", role: "region", "aria-label": "Unique URLs" },
                make("table", { class: "urls" }, make("caption", { class: "unseen" },
                    "Unique URLs. A button in each heading sorts by its column."), head(), parts.body)),
            pager());
        find();
    }

    return { start, showOnly };
})();

function queriesText({ queries }) {
    const texts = {
        not_cut: "URLs keep their queries.",
        not_wanted: "Queries were cut off and are not listed.",
        left_out: "Queries were cut off, and are left out of this page.",
        listed: "“queries” shows the most frequent ones of a URL whose query was cut off.",
    };
    return texts[queries.state] ?? "";
}
