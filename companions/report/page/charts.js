// What the charts have in common: colours of the theme, the axis of times, marks.

const charts = []; // all of the page: {chart, paint}

const themeColour = (name) =>
    getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();

const withAlpha = (colour, alpha) =>
    colour + Math.round(255 * alpha).toString(16).padStart(2, "0"); // colours are #rrggbb

function setChartDefaults() {
    const { scale, plugins: { legend } } = Chart.defaults;
    scale.ticks.color = scale.title.color = () => themeColour("muted"); // asked at every update
    scale.grid.color = scale.grid.borderColor = () => themeColour("line");
    legend.labels.color = () => themeColour("text");
    legend.labels.boxWidth = legend.labels.boxHeight = 12;
    legend.align = "end";
    Chart.defaults.animation = false;
    Chart.defaults.maintainAspectRatio = false;
    Chart.defaults.font.family = getComputedStyle(document.body).fontFamily;
    Chart.defaults.font.size = 12;
}

// A chart with a text that tells the same. `paint` gives its data the colours of the theme, now and
// whenever that changes.
function drawChart(holder, title, description, config, paint) {
    const canvas = make("canvas", { role: "img", "aria-label": `${title}: ${description}` });
    holder.append(make("figure", { class: "chart" },
        make("figcaption", {}, make("strong", {}, title), " ",
            config.type === "bar" ? null : make("span", {}, description)),
        make("div", { class: "plot" }, canvas)));
    paint(config);
    const chart = new Chart(canvas, config);
    charts.push({ chart, paint });
    return chart;
}

function repaintAll() {
    const widthOfPaper = 700;
    for (const { chart, paint } of charts) {
        paint(chart);
        chart.update("none");
        if (theme.isPrinted()) {
            const isWide = chart.canvas.closest(".columns") === null;
            chart.resize(isWide ? widthOfPaper : widthOfPaper / 2 - 20, isWide ? 190 : 230);
        } else {
            chart.resize();
        }
    }
}

// An axis of counts.
const countAxis = (options = {}) => ({
    beginAtZero: true,
    ticks: { maxTicksLimit: 6, precision: 0, callback: (value) => number(value) },
    ...options,
});

const tickSteps = [1, 5, 15, 30, 60, 300, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400,
    172800, 604800, 1209600, 2592000, 7776000, 31536000];

// An axis of times with marks at round ones, and the day where it changes.
function timeAxis(begin, end) {
    const labels = (scale) => {
        const most = Math.max(2, Math.floor(scale.width / 80));
        const step = tickSteps.find((size) => (scale.max - scale.min) / size <= most)
            ?? 31536000 * Math.ceil((scale.max - scale.min) / 31536000 / most);
        let day = "";
        scale.ticks = [];
        for (let time = Math.ceil(scale.min / step) * step; time <= scale.max; time += step) {
            const isNewDay = dayOf(time) !== day;
            day = dayOf(time);
            const hour = clock(time, step < 60);
            scale.ticks.push({ value: time,
                label: step >= 86400 ? day : isNewDay ? [hour, day] : hour });
        }
    };
    return {
        type: "linear", min: begin, max: end,
        afterBuildTicks: labels,
        ticks: { autoSkip: false, maxRotation: 0,
            callback: (value, index, ticks) => ticks[index].label },
    };
}

function writeLabel(chart, text, x, y, colour) {
    const { ctx, chartArea } = chart;
    ctx.font = `600 11px ${Chart.defaults.font.family}`;
    const half = ctx.measureText(text).width / 2 + 4;
    const middle = Math.min(Math.max(x, chartArea.left + half), chartArea.right - half);
    ctx.fillStyle = withAlpha(themeColour("card"), 0.85);
    ctx.fillRect(middle - half, y - 8, 2 * half, 16);
    ctx.fillStyle = colour;
    ctx.textAlign = "center";
    ctx.textBaseline = "middle";
    ctx.fillText(text, middle, y);
}

// Shades what lies in the replay period, {start, end} in seconds, either null.
const periodShade = (period) => ({
    id: "period",
    beforeDatasetsDraw(chart) {
        if (period.start === null && period.end === null) {
            return;
        }
        const { ctx, chartArea: area, scales: { x } } = chart;
        const clip = (pixel) => Math.min(Math.max(pixel, area.left), area.right);
        const left = period.start === null ? area.left : clip(x.getPixelForValue(period.start));
        const right = period.end === null ? area.right : clip(x.getPixelForValue(period.end + 1));
        ctx.save();
        ctx.fillStyle = withAlpha(themeColour("accent"), 0.09);
        ctx.fillRect(left, area.top, right - left, area.bottom - area.top);
        ctx.strokeStyle = withAlpha(themeColour("accent"), 0.7);
        ctx.setLineDash([4, 3]);
        for (const [bound, pixel] of [[period.start, left], [period.end, right]]) {
            if (bound !== null && pixel > area.left && pixel < area.right) {
                ctx.beginPath();
                ctx.moveTo(pixel, area.top);
                ctx.lineTo(pixel, area.bottom);
                ctx.stroke();
            }
        }
        ctx.restore();
    },
});

// Marks a point with a label above it. `find()` gives {x, y, text} in the chart's values, or null.
const pointMark = (find) => ({
    id: "mark",
    afterDatasetsDraw(chart) {
        const point = find();
        if (point === null || point.x < chart.scales.x.min || point.x > chart.scales.x.max) {
            return;
        }
        const { ctx, scales } = chart;
        const x = scales.x.getPixelForValue(point.x);
        const y = scales.y.getPixelForValue(point.y);
        const colour = themeColour("mark");
        ctx.save();
        ctx.beginPath();
        ctx.arc(x, y, 4.5, 0, 2 * Math.PI);
        ctx.fillStyle = themeColour("card");
        ctx.fill();
        ctx.lineWidth = 2;
        ctx.strokeStyle = colour;
        ctx.stroke();
        writeLabel(chart, point.text, x, Math.max(y - 14, chart.chartArea.top - 2), colour);
        ctx.restore();
    },
});

// Upright lines at bars: marks, [{at (index of the bar), text}].
const barMarks = (marks) => ({
    id: "marks",
    afterDatasetsDraw(chart) {
        const { ctx, chartArea: area, scales: { x } } = chart;
        const colour = themeColour("mark");
        ctx.save();
        marks.forEach(({ at, text }, index) => {
            const pixel = x.getPixelForValue(at);
            ctx.strokeStyle = colour;
            ctx.lineWidth = 1.5;
            ctx.setLineDash([4, 3]);
            ctx.beginPath();
            ctx.moveTo(pixel, area.top);
            ctx.lineTo(pixel, area.bottom);
            ctx.stroke();
            writeLabel(chart, text, pixel, area.top - 10 - 15 * (marks.length - 1 - index), colour);
        });
        ctx.restore();
    },
});
