// What the requests are made of: transactions, what lacks one, bodies, hosts, methods.

const exampleText = ({ method, host, url }) => `${method} ${host === "NA" ? "" : host}${url}`;

function examplesOf(transaction) {
    return make("ul", { class: "examples" }, transaction.examples.map((example) =>
        make("li", { class: "logged" }, exampleText(example))));
}

// A button that shows the rows meant in the table of all URLs.
const urlsButton = (urls, label, filters) =>
    make("button", { type: "button", class: "link", "aria-label": label,
        onclick: () => urlTable.showOnly(filters) }, number(urls));

function showTransactions(mix) {
    const all = [...mix.transactions];
    const lacking = mix.without_transaction;
    const columns = [{ title: "Transaction", kind: "name" }, { title: "Requests", kind: "number" },
        { title: "Share", kind: "number" }, { title: "", kind: "bar-cell" }, { title: "Peak minute", kind: "number" },
        { title: "", kind: "number" }, { title: "URLs", kind: "number" }, { title: "Examples", kind: "logged" }];
    const most = mostOf(all.map((part) => part.share));
    const rowOf = (part, name, filters, label) => [name, number(part.requests), share(part.share),
        filters.type === "without" ? bar(part.share, "open") : bar(part.share / most),
        part.peak_minute === null ? "–" : number(part.peak_minute.count), part.peak_minute?.text.slice(0, 16) ?? "",
        urlsButton(part.urls, label, filters), examplesOf(part)];
    const parts = byId("mix-parts");
    parts.append(make("h3", {}, "Transactions"),
        make("p", { class: "lead" }, "Shares are of all requests with a transaction."));
    parts.append(all.length === 0 ? make("p", { class: "note" }, "No pattern names a transaction.")
        : growingTable("Mix by transaction", columns, all.length, (at) => rowOf(all[at], all[at].name,
            { transaction: all[at].name }, `URLs of ${all[at].name}: ${number(all[at].urls)}`), 20));
    parts.append(make("h3", {}, "Main requests without a transaction"));
    if (lacking.requests === 0) {
        parts.append(make("p", { class: "note" }, "None: every main request has a transaction."));
        return;
    }
    parts.append(make("p", { class: "lead" }, `${share(lacking.share)} of all main requests. A load test that goes by `
        + "transactions does not make them."),
        plainTable("Without a transaction", columns,
            [rowOf(lacking, "none", { type: "without" }, `URLs without a transaction: ${number(lacking.urls)}`)]));
}

function showLackingBodies(mix, urls) {
    const { requests } = mix.post_without_body;
    const requestsOf = (at) => urls.rows[at][urlColumns.requests];
    const rows = [...mix.post_without_body.urls].sort((a, b) => requestsOf(b) - requestsOf(a));
    const parts = byId("mix-parts");
    parts.append(make("h3", {}, "POST and PUT without a body file"));
    if (rows.length === 0) {
        parts.append(make("p", { class: "note" }, "None: every main URL that sends a body has a file for it."));
        return;
    }
    parts.append(make("p", { class: "lead" }, `${countOf(rows.length, "URL")} with ${countOf(requests, "request")} would be `
        + "sent with nothing in them. ",
        make("button", { type: "button", class: "link", onclick: () => urlTable.showOnly({ type: "no-body" }) },
            "Show them in the table")),
        growingTable("URLs without a body file", [{ title: "URL", kind: "logged" }, { title: "Requests", kind: "number" }],
            rows.length, (at) => {
                const [method, host, url, , , , count] = urls.rows[rows[at]];
                return [exampleText({ method, host, url }), number(count)];
            }, 8));
}

function showShares(holder, title, name, parts, filterOf) {
    const most = mostOf(parts.map((part) => part.share));
    const shown = (part) => (part.name === "NA" ? "not in the log" : part.name);
    holder.append(make("div", {}, make("h3", {}, title), growingTable(title,
        [{ title: name, kind: "logged host" }, { title: "Requests", kind: "number" }, { title: "Share", kind: "number" },
            { title: "", kind: "bar-cell" }, { title: "URLs", kind: "number" }], parts.length,
        (at) => [shown(parts[at]), number(parts[at].requests), share(parts[at].share), bar(parts[at].share / most),
            urlsButton(parts[at].urls, `URLs of ${shown(parts[at])}: ${number(parts[at].urls)}`,
                filterOf(parts[at].name))], 8)));
}

function showMix({ mix, urls }) {
    showTransactions(mix);
    showLackingBodies(mix, urls);
    const columns = make("div", { class: "columns" });
    byId("mix-parts").append(columns);
    showShares(columns, "Hosts", "Host", mix.hosts, (host) => ({ host }));
    showShares(columns, "Methods", "Method", mix.methods, (method) => ({ method }));
}
