// Numbers, shares and times as the page writes them. Times are seconds of the replay zone's clock, so
// the functions for UTC give its date and hour.

const decimals = [0, 1, 2].map((digits) => new Intl.NumberFormat("en", {
    minimumFractionDigits: digits, maximumFractionDigits: digits }));

const number = (value) => decimals[0].format(value);

const threeDigits = new Intl.NumberFormat("en", { maximumSignificantDigits: 3 });

// A mean or a rate: three digits, or all before the point.
const rate = (value) => (value >= 100 ? number(value) : threeDigits.format(value));

function share(part) {
    return part > 0 && part < 0.001 ? "<0.1%" : `${decimals[1].format(100 * part)}%`;
}

const countOf = (count, noun, plural = `${noun}s`) => `${number(count)} ${count === 1 ? noun : plural}`;

const durationUnits = [["d", 86400], ["h", 3600], ["min", 60], ["s", 1]];

// Seconds in their two largest units: "3 min 5 s".
function duration(seconds) {
    if (seconds < 60) {
        return `${rate(seconds)} s`;
    }
    let rest = Math.round(seconds);
    const parts = [];
    for (const [unit, size] of durationUnits) {
        const count = Math.floor(rest / size);
        rest -= count * size;
        if (count > 0 || parts.length > 0) {
            parts.push([count, unit]);
        }
    }
    return parts.slice(0, 2).filter(([count]) => count > 0).map((part) => part.join(" ")).join(" ");
}

function microseconds(value) {
    return value < 1000 ? `${rate(value)} µs`
        : value < 1e6 ? `${rate(Math.round(value / 10) / 100)} ms`
        : duration(Math.round(value / 1e4) / 100);
}

function bytes(size) {
    const units = ["bytes", "kB", "MB", "GB", "TB"];
    let unit = 0;
    for (; size >= 1000 && unit + 1 < units.length; ++unit) {
        size /= 1000;
    }
    return `${rate(unit === 0 ? size : Math.round(size * 10) / 10)} ${units[unit]}`;
}

// "2026-03-10 09:00:00"
const wallTime = (seconds) => new Date(seconds * 1000).toISOString().slice(0, 19).replace("T", " ");
const clock = (seconds, hasSeconds) => wallTime(seconds).slice(11, hasSeconds ? 19 : 16);
const dayOf = (seconds) => wallTime(seconds).slice(0, 10);

// A moment as short as the step allows.
function moment(seconds, step) {
    const text = wallTime(seconds);
    return step >= 86400 ? text.slice(0, 10) : step >= 60 ? text.slice(0, 16) : text;
}

const stepNames = new Map([[1, "second"], [60, "minute"], [3600, "hour"], [86400, "day"]]);

// "minute", "5 minutes"
function stepName(step) {
    for (const [size, name] of [...stepNames].reverse()) {
        if (step % size === 0) {
            return step === size ? name : `${step / size} ${name}s`;
        }
    }
    return `${step} seconds`;
}
