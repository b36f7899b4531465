// How values spread: a chart of bars with median, 90th and 99th percentile marked, and its numbers.

function binText([from, to], format) {
    return from === to ? format(from) : `${format(from)}–${format(to)}`;
}

function percentilesTable(title, values, format) {
    const columns = [["Median", values.median], ["90th", values.p90], ["99th", values.p99],
        ["Mean", values.mean], ["Largest", values.largest]];
    return plainTable(title, [{ title: "Values" }, ...columns.map(([name]) => ({ title: name, kind: "number" }))],
        [[number(values.count), ...columns.map(([, value]) => format(value))]]);
}

// values: a distribution; name: of its unit on the axis; format: a value as text; binFormat: bounds of bars.
function showDistribution(holder, id, title, values, axisTitle, format, binFormat = number) {
    const part = make("div", { class: "distribution", id });
    holder.append(part);
    if (values.count === 0) {
        part.append(make("p", {}, make("strong", {}, title)), make("p", { class: "note" }, "None."));
        return;
    }
    const barOf = (value) => values.bins.findIndex(([, to]) => value <= to);
    const marks = [["median", values.median], ["90th", values.p90], ["99th", values.p99]]
        .map(([name, value]) => ({ at: barOf(value), text: `${name} ${format(value)}` }));
    const labels = values.bins.map((bin) => binText(bin, binFormat));
    drawChart(part, title, `median ${format(values.median)}, 90th percentile ${format(values.p90)}, `
        + `99th percentile ${format(values.p99)}`, {
        type: "bar",
        data: { labels, datasets: [{ data: values.bins.map(([, , count]) => count),
            barPercentage: 1, categoryPercentage: 0.92, minBarLength: 1 }] },
        options: {
            layout: { padding: { top: 54 } },
            interaction: { mode: "index", intersect: false },
            scales: {
                x: { grid: { display: false }, ticks: { minRotation: values.bins.length > 8 ? 45 : 0, maxRotation: 45,
                    autoSkip: values.bins.length > 16 },
                    title: { display: true, text: axisTitle } },
                y: countAxis(),
            },
            plugins: { legend: { display: false }, tooltip: { callbacks: {
                title: ([item]) => item.label,
                label: (item) => ` ${number(item.parsed.y)} (${share(item.parsed.y / values.count)})`,
            } } },
        },
        plugins: [barMarks(marks)],
    }, (chart) => {
        chart.data.datasets[0].backgroundColor = withAlpha(themeColour("accent"), 0.75);
    });
    part.append(percentilesTable(title, values, format),
        lazyDetails("Its bars as a table", () => plainTable(title,
            [{ title: axisTitle }, { title: "Number", kind: "number" }, { title: "Share", kind: "number" }],
            values.bins.map((bin) => [binText(bin, binFormat), number(bin[2]), share(bin[2] / values.count)]))));
}

function showSessions(figures) {
    const { sessions } = figures;
    byId("sessions-lead").append(`${countOf(sessions.count, "session")}, of which ${number(sessions.with_one_request)} `
        + `(${share(sessions.with_one_request / Math.max(sessions.count, 1))}) with one request. Bars widen to the right. `
        + "A session lasts from its first to its last request in the period, however long it is silent between them.");
    const holder = byId("session-charts");
    showDistribution(holder, "requests-of-session", "Requests of a session", sessions.requests, "requests", rate);
    showDistribution(holder, "length-of-session", "Length of a session", sessions.length_seconds, "seconds", duration);
    showDistribution(holder, "request-gaps", "Time between requests", sessions.gap_seconds, "seconds", duration);
    showDistribution(holder, "page-gaps", "Time between main requests (think time)", sessions.page_gap_seconds,
        "seconds", duration);
    if (figures.response_time_microseconds !== null) {
        showDistribution(holder, "response-times", "Response time", figures.response_time_microseconds,
            "time to respond", microseconds, microseconds);
    }
}
