// The logs that the figures are of, and how they were read.

function showSources({ scenario, freshness }) {
    const kinds = { apache: "Apache or a layout of its own", iis: "IIS (W3C)", other: "a layout of its own" };
    const modes = { cookie: "by cookies", client_address: "by the client's address" };
    byId("source-parts").append(
        make("p", { class: "lead" }, `Logs of type ${kinds[scenario.log_type] ?? scenario.log_type}; sessions are told apart `
            + `${modes[scenario.session_mode] ?? scenario.session_mode}; `
            + `${scenario.are_queries_cut ? "URLs are listed without their queries" : "URLs keep their queries"}. `
            + "All times are those of the replay zone."),
        growingTable("Logs", [{ title: "File", kind: "logged" }, { title: "Size", kind: "number" }, { title: "" }],
            scenario.logs.length, (at) => {
                const log = scenario.logs[at];
                return [log.path, bytes(log.bytes), log.is_body_file ? "request bodies" : ""];
            }),
        make("p", { class: "note" }, "Results of a run: ", make("code", { class: "logged" }, freshness.directory)));
}
