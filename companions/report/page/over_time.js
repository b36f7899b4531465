// Requests, sessions and responses over time, three charts above each other with the same axis.

const statusClasses = [
    ["1xx", "grey"], ["2xx", "good"], ["3xx", "accent"], ["4xx", "open"], ["5xx", "bad"], ["other", "violet"],
];

const sumOf = (values) => values.reduce((sum, value) => sum + value, 0);
const mostOf = (values) => values.reduce((most, value) => Math.max(most, value), 0);

// The series by steps `factor` times as long; `join` makes one value of those of a long step.
function joinSteps(values, factor, join) {
    if (factor === 1) {
        return values;
    }
    const joined = [];
    for (let at = 0; at < values.length; at += factor) {
        joined.push(join(values.slice(at, at + factor)));
    }
    return joined;
}

// All series at a length of step; `start` is moved so that long steps begin at round times.
function seriesAt(load, step) {
    const factor = step / load.step_seconds;
    const lead = Math.round((load.start - Math.floor(load.start / step) * step) / load.step_seconds);
    const padded = (values) => (lead === 0 ? values : [...Array(lead).fill(0), ...values]);
    const by = (join) => (values) => joinSteps(padded(values), factor, join);
    return {
        step,
        start: load.start - lead * load.step_seconds,
        requests: by(sumOf)(load.requests),
        mainRequests: by(sumOf)(load.main_requests),
        begun: by(sumOf)(load.sessions_begun),
        atWork: by(mostOf)(load.sessions_at_work),
        responses: statusClasses.map(([name]) => by(sumOf)(load.responses[name])),
    };
}

// Lengths of step that can be chosen: those with at least 12 steps.
function stepChoices(load) {
    const span = load.steps * load.step_seconds;
    return [1, 10, 60, 300, 900, 3600, 21600, 86400].filter((step) =>
        step === load.step_seconds || (step > load.step_seconds && step % load.step_seconds === 0
            && span / step >= 12));
}

// The points of a line of steps: each value holds until the next step.
function pointsOf(series, values) {
    const points = values.map((value, at) => ({ x: series.start + at * series.step, y: value }));
    if (values.length > 0) {
        points.push({ x: series.start + values.length * series.step, y: values[values.length - 1] });
    }
    return points;
}

const areaOf = (label, options = {}) => ({
    label, data: [], stepped: true, pointRadius: 0, pointHitRadius: 0, borderWidth: 1.5, fill: "origin",
    ...options,
});

function timeConfig(datasets, axis, plugins, state, isStacked) {
    return {
        type: "line",
        data: { datasets },
        options: {
            parsing: false, normalized: true,
            interaction: { mode: "index", intersect: false },
            layout: { padding: { top: 6 } },
            scales: { x: axis, y: countAxis({ stacked: isStacked, grace: "12%",
                afterFit: (scale) => { scale.width = 58; } }) },
            plugins: { tooltip: { callbacks: {
                title: ([item]) => {
                    const { start, step } = state.series;
                    return moment(Math.min(item.parsed.x, start + (state.series.requests.length - 1) * step), step);
                },
                label: (item) => ` ${item.dataset.label}: ${number(item.parsed.y)}`,
            } } },
        },
        plugins,
    };
}

function paintArea(dataset, colour, alpha) {
    dataset.borderColor = themeColour(colour);
    dataset.backgroundColor = withAlpha(themeColour(colour), alpha);
}

function peakOf(series) {
    const count = mostOf(series.requests);
    const at = series.requests.indexOf(count);
    return count === 0 ? null : { count, time: series.start + at * series.step };
}

function timeTable(state) {
    const { series } = state;
    const columns = ["Begins", "Requests", "Main", "Sessions begun", "At work",
        ...statusClasses.map(([name]) => name)]
        .map((title, at) => ({ title, kind: at > 0 ? "number" : null }));
    const all = [series.requests, series.mainRequests, series.begun, series.atWork, ...series.responses];
    const rows = series.requests.map((_, at) => at).filter((at) => all.some((values) => values[at] > 0));
    return growingTable(`Numbers by ${stepName(series.step)}; steps without any are left out`, columns,
        rows.length, (at) => [moment(series.start + rows[at] * series.step, series.step),
            ...all.map((values) => number(values[rows[at]]))], 40);
}

function outlyingText(lines, where) {
    if (lines === null) {
        return null;
    }
    const { first, last } = lines;
    const span = first.text === last.text ? first.text : `${first.text} to ${last.text}`;
    return `Not drawn: ${countOf(lines.lines, "line")} far ${where}, of ${span}.`;
}

function periodText({ period, funnel }) {
    const { start, end } = period;
    if (start === null && end === null) {
        return "The scenario sets no replay period: all requests are in it.";
    }
    const bounds = start === null ? `until ${end.text}` : end === null ? `from ${start.text}`
        : `${start.text} to ${end.text}`;
    return `Shaded: the replay period, ${bounds}. Before it the logs hold ${countOf(funnel.before_period, "request")}, `
        + `after it ${number(funnel.after_period)}.`;
}

function choice(label, options, onchange) {
    const select = make("select", { "aria-label": label, onchange: () => onchange(select.value) },
        options.map(([value, text]) => make("option", { value }, text)));
    return make("label", {}, make("span", {}, label), select);
}

function showOverTime(figures) {
    const load = figures.over_time;
    byId("time-lead").append([periodText(figures), outlyingText(load.lines_far_before, "before"),
        outlyingText(load.lines_far_after, "after")].filter((text) => text !== null).join(" "));
    if (load.steps === 0) {
        byId("time-charts").append(make("p", { class: "note" }, "The logs hold no request with a readable time."));
        return;
    }
    const period = { start: figures.period.start?.time ?? null, end: figures.period.end?.time ?? null };
    const state = { series: seriesAt(load, load.step_seconds) };
    const whole = [load.start, load.start + load.steps * load.step_seconds];
    const axes = [0, 1, 2].map(() => timeAxis(...whole));
    const peak = peakOf(state.series);
    const unit = stepName(load.step_seconds);
    const holder = byId("time-charts");
    const peakPoint = () => {
        const most = peakOf(state.series);
        return most === null ? null : { x: most.time + state.series.step / 2, y: most.count,
            text: `${number(most.count)} at ${moment(most.time, state.series.step)}` };
    };

    const drawn = [];
    drawn.push(drawChart(holder, "Requests",
        peak === null ? "no request counts"
            : `that count; most in a ${unit}: ${number(peak.count)} at ${moment(peak.time, load.step_seconds)}`,
        timeConfig([areaOf("Main requests"), areaOf("Requests")], axes[0],
            [periodShade(period), pointMark(peakPoint)], state),
        ({ data: { datasets } }) => {
            paintArea(datasets[0], "accent", 0.45);
            paintArea(datasets[1], "teal", 0.18);
        }));
    const working = figures.sessions.peak_at_work;
    drawn.push(drawChart(holder, "Sessions",
        working === null ? "none" : `at work at a time, and begun; most at work: ${number(working.count)} at ${working.text}`,
        timeConfig([areaOf("At work", { borderWidth: 2 }), areaOf("Begun")], axes[1],
            [periodShade(period)], state),
        ({ data: { datasets } }) => {
            paintArea(datasets[0], "violet", 0.12);
            paintArea(datasets[1], "teal", 0.35);
        }));
    const totals = statusClasses.map(([name]) => [name, sumOf(load.responses[name])]).filter(([, sum]) => sum > 0);
    drawn.push(drawChart(holder, "Responses",
        `by class of status, of all lines that can be read: ${totals.map(([name, sum]) => `${number(sum)} ${name}`).join(", ")}`,
        timeConfig(statusClasses.map(([name], at) =>
            areaOf(name, { borderWidth: 1, fill: at === 0 ? "origin" : "-1" })), axes[2],
            [periodShade(period)], state, true),
        ({ data: { datasets } }) => datasets.forEach((dataset, at) =>
            paintArea(dataset, statusClasses[at][1], 0.6))));

    const table = make("div");
    const update = () => {
        const { series } = state;
        const values = [[series.mainRequests, series.requests], [series.atWork, series.begun], series.responses];
        drawn.forEach((chart, index) => {
            chart.data.datasets.forEach((dataset, at) => {
                dataset.data = pointsOf(series, values[index][at]);
                dataset.hidden = index === 2 && values[2][at].every((value) => value === 0);
            });
            chart.options.plugins.legend = { labels: { filter: (item) => !chart.data.datasets[item.datasetIndex].hidden } };
            chart.update("none");
        });
        table.replaceChildren(lazyDetails("The numbers of these charts as a table", () => timeTable(state)));
    };
    const setRange = (range) => drawn.forEach((chart) => {
        [chart.options.scales.x.min, chart.options.scales.x.max] = range;
        chart.update("none");
    });
    update();
    holder.append(table);

    const controls = byId("time-controls");
    const inside = [Math.max(period.start ?? whole[0], whole[0]), Math.min((period.end ?? whole[1]) + 1, whole[1])];
    if (inside[0] < inside[1] && (inside[0] > whole[0] || inside[1] < whole[1])) {
        controls.append(choice("Shown", [["all", "all that was logged"], ["period", "the replay period"]],
            (value) => setRange(value === "all" ? whole : inside)));
    }
    const steps = stepChoices(load);
    if (steps.length > 1) {
        controls.append(choice("By", steps.map((step) => [String(step), stepName(step)]), (value) => {
            state.series = seriesAt(load, Number(value));
            update();
        }));
    }
}
