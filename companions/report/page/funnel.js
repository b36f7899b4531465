// The way from lines to URLs, as a table whose bars fall like a staircase.

const badLineCauses = {
    unclosed_field: "a quote or bracket is not closed",
    too_few_fields: "fewer fields than the layout has",
    invalid_client_address: "the client is not an address",
    invalid_request_line: "the request line cannot be read",
    invalid_time: "the time cannot be read",
    missing_fields: "a field that is needed is empty",
};

// [title, number, kind of bar, whether a row without lines is left out]
function funnelSteps(funnel) {
    return [
        ["Lines read", funnel.lines, "total"],
        ["Blank", funnel.blank, "loss"],
        ["Comments", funnel.comments, "loss"],
        ["Requests", funnel.requests, "total"],
        ["Bad: cannot be read", funnel.bad, "loss"],
        ["Before the replay period", funnel.before_period, "loss"],
        ["After the replay period", funnel.after_period, "loss"],
        ["Beyond the limit of waiting requests", funnel.beyond_waiting_limit, "loss", true],
        ["Loaded", funnel.loaded, "total"],
        ["Redirect follow-ups", funnel.redirect_follow_ups, "loss"],
        ["Without a session", funnel.without_session, "loss"],
        ["Counted", funnel.counted, "total"],
        ["Inline, left out", funnel.inline_left_out, "loss"],
        ["Filtered", funnel.filtered, "loss"],
        ["Inline, listed", funnel.inline_listed, "other", true],
        ["Main with a transaction", funnel.main_with_transaction, "good"],
        ["Main without a transaction", funnel.main_without_transaction, "open"],
        ["Main, as no pattern fits", funnel.no_pattern, "open"],
    ].filter(([, count, , isOptional]) => count > 0 || !isOptional);
}

const partNames = {
    before_period: "before the period", after_period: "after the period",
    beyond_waiting_limit: "beyond the limit of waiting requests", redirect_follow_ups: "redirect follow-ups",
    without_session: "without a session", inline_left_out: "inline, left out", inline_listed: "inline, listed",
    main_with_transaction: "with a transaction", main_without_transaction: "without a transaction",
    no_pattern: "without a fitting pattern",
};

// [whole, its parts], each of numbers that were counted apart from each other.
function funnelSums(funnel) {
    const parts = (...names) => names.map((name) => [partNames[name] ?? name.replaceAll("_", " "), funnel[name]]);
    return [
        ["lines", funnel.lines, parts("blank", "comments", "bad", "before_period", "after_period",
            "beyond_waiting_limit", "loaded")],
        ["loaded", funnel.loaded, parts("redirect_follow_ups", "without_session", "counted")],
        ["counted", funnel.counted, parts("inline_left_out", "filtered", "inline_listed",
            "main_with_transaction", "main_without_transaction", "no_pattern")],
    ];
}

function sumText([name, whole, parts]) {
    const added = parts.filter(([, count]) => count > 0)
        .map(([part, count]) => `${number(count)} ${part}`);
    return `${number(whole)} ${name} = ${added.join(" + ") || 0}`;
}

function showFunnelSums(funnel) {
    const sums = funnelSums(funnel);
    const holds = funnel.adds_up && sums.every(([, whole, parts]) =>
        parts.reduce((sum, [, count]) => sum + count, 0) === whole);
    byId("funnel-sums").append(
        make("div", { class: holds ? "notice good" : "notice bad", id: "adds-up" },
            make("p", {}, make("strong", {}, holds ? "It adds up." : "It does not add up."),
                " The steps were counted apart from each other."),
            make("ul", { class: "sums" }, sums.map((sum) => make("li", {}, sumText(sum))))),
        make("p", { class: "note" }, "Summary of a run: ", make("code", {}, funnel.summary)));
}

function showFunnel(funnel) {
    const all = Math.max(funnel.lines, 1);
    let rest = 0; // of the last total, behind the rows below it
    const rows = funnelSteps(funnel).map(([title, count, kind]) => {
        const isTotal = kind === "total";
        rest = isTotal ? count : rest - count;
        const begin = isTotal ? 0 : rest;
        return make("tr", { class: isTotal ? "total" : count === 0 ? "none" : null },
            make("th", { scope: "row" }, title),
            make("td", { class: "number" }, number(count)),
            make("td", { class: "number" }, share(count / all)),
            make("td", { class: "bar-cell" }, bar(count / all, kind, begin / all)));
    });
    byId("funnel-table").append(make("table", { class: "funnel" },
        make("caption", { class: "unseen" }, "From lines to URLs"),
        make("thead", {}, make("tr", {},
            make("th", { scope: "col" }, "Step"), make("th", { scope: "col", class: "number" }, "Lines"),
            make("th", { scope: "col", class: "number" }, "Share"), make("td", {}))),
        make("tbody", {}, rows)));
    if (funnel.bad > 0) {
        const causes = Object.entries(funnel.bad_lines).filter(([, count]) => count > 0);
        byId("funnel-table").append(make("details", {},
            make("summary", {}, `Why ${countOf(funnel.bad, "line is", "lines are")} bad`),
            plainTable("Causes of bad lines",
                [{ title: "Cause" }, { title: "Lines", kind: "number" }],
                causes.map(([cause, count]) => [badLineCauses[cause] ?? cause, number(count)]))));
    }
    showFunnelSums(funnel);
}
