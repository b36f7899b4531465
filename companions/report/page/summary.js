// The head of the page: what is reported, how fresh the results are, key figures, what to set.

function notice(kind, title, ...content) {
    byId("notices").append(make("div", { class: `notice ${kind}`, role: "note" },
        make("p", {}, make("strong", {}, title), " ", ...content)));
}

function listInto(notices, paths) {
    notices.lastElementChild.append(make("ul", { class: "paths" },
        paths.map((path) => make("li", { class: "logged" }, path))));
}

// The figures are of the logs as they are now; the results of the last run may not be.
function showFreshness({ freshness, scenario, queries }) {
    if (freshness.results === "none") {
        notice("warning", "No results yet.", "No run has written url.list for this scenario. "
            + "The figures here are worked out from the logs.");
    } else if (freshness.results === "being_written") {
        notice("warning", "A run is at work.", "It is just writing the results of this scenario, so that url.list "
            + "and the other files may differ from this page.");
    } else if (freshness.results === "older") {
        notice("warning", "Results are out of date.", "These were changed after the last run wrote url.list; the figures "
            + "here are of the files as they are now, so that they may differ from it:");
        listInto(byId("notices"), freshness.newer_inputs);
    } else if (freshness.results === "of_other_inputs") {
        notice("warning", "Results are of other files.", "The last run has not read these as they are: they are of "
            + "another replay profile, or were replaced. The figures here are of them, so that they may differ from "
            + "url.list:");
        listInto(byId("notices"), freshness.other_inputs);
    }
    if (freshness.lacks_query_list) {
        notice("warning", "query_url.list is missing.", "The settings ask for it, but the last run left none. "
            + "The queries here were counted in the logs.");
    }
    if (scenario.are_queries_cut && queries.state === "left_out") {
        notice("plain", "Queries are left out.", "Whoever made this page wanted none on it.");
    }
}

function showMasthead(figures) {
    const { scenario, first_request: first, last_request: last } = figures;
    document.title = `${scenario.name} – load report`;
    byId("scenario").append(scenario.name);
    const logs = scenario.logs.filter((log) => !log.is_body_file);
    const facts = [
        first === null ? "no request counts" : `${first.text} to ${last.text}`,
        `${countOf(logs.length, "log")}, ${bytes(sumOf(logs.map((log) => log.bytes)))}`,
        `profile ${scenario.replay_profile}`,
    ];
    byId("facts").append(...facts.map((fact) => make("span", {}, fact)));
}

function tile(id, value, title, ...detail) {
    byId("tiles").append(make("div", { class: "tile", id: `tile-${id}` },
        make("dt", {}, title), make("dd", { class: "value" }, value), make("dd", { class: "detail" }, ...detail)));
}

const peakTime = (peak) => (peak === null ? null : make("span", {}, `at ${peak.text.slice(0, 16)}`));

function showTiles(figures) {
    const { funnel, sessions, to_set: toSet, mix, urls } = figures;
    const main = funnel.main_with_transaction + funnel.main_without_transaction + funnel.no_pattern;
    const busiest = toSet.requests_per_minute.most;
    tile("requests", number(funnel.counted), "Requests that count",
        `${share(funnel.counted / Math.max(funnel.lines, 1))} of ${countOf(funnel.lines, "line")}`);
    tile("peak", number(busiest?.count ?? 0), "Peak minute", "requests ", peakTime(busiest));
    tile("sessions", number(sessions.count), "Sessions",
        `median ${countOf(sessions.requests.median, "request")}, `,
        make("span", {}, duration(sessions.length_seconds.median)));
    tile("concurrent", number(sessions.peak_at_work?.count ?? 0), "Concurrent sessions",
        "most, ", peakTime(sessions.peak_at_work));
    tile("urls", number(urls.rows.length), "Unique URLs", countOf(mix.hosts.length, "host"));
    tile("transactions", number(mix.transactions.length), "Transactions",
        main === 0 ? "no main request" : `cover ${share(funnel.main_with_transaction / main)} of main`);
}

function showSettings({ to_set: toSet }) {
    const pair = (name, { mean, most }) =>
        [name, `${rate(mean)} a minute`, most === null ? "–" : `${number(most.count)} a minute`,
            most?.text.slice(0, 16) ?? ""];
    const think = toSet.think_time_seconds;
    const working = toSet.concurrent_sessions;
    byId("settings-table").append(plainTable("What to set", [{ title: "Setting" }, { title: "Mean", kind: "number" },
        { title: "Peak", kind: "number" }, { title: "When", kind: "number" }], [
        pair("Sessions to begin", toSet.sessions_per_minute),
        pair("Requests", toSet.requests_per_minute),
        pair("Main requests", toSet.main_requests_per_minute),
        ["Concurrent sessions", "", number(working?.count ?? 0), working?.text.slice(0, 16) ?? ""],
        ["Think time", think.mean === null ? "–" : duration(think.mean), "", ""],
        ["Think time, median", think.median === null ? "–" : duration(think.median), "", ""],
    ]));
    const shares = toSet.transaction_shares;
    const most = mostOf(shares.map((part) => part.share));
    byId("settings-shares").append(shares.length === 0
        ? make("p", { class: "note" }, "No pattern names a transaction.")
        : growingTable("Share of each transaction", [{ title: "Transaction", kind: "name" },
            { title: "Share", kind: "number" }, { title: "", kind: "bar-cell" }], shares.length,
            (at) => [shares[at].transaction, share(shares[at].share), bar(shares[at].share / most)], 8));
}
