// The rows of the table of URLs, by number: which are meant, and in which order. Holds only numbers and
// lowered texts, so that a hundred thousand rows are searched and sorted while one types.

const urlColumns = { method: 0, host: 1, url: 2, type: 3, filtered: 4, transaction: 5, requests: 6, body: 7,
    pattern: 8 };

// What a row is, in a word.
function urlKind(row) {
    return row[urlColumns.filtered] ? "filtered"
        : row[urlColumns.type] === "inline" ? "inline"
        : row[urlColumns.pattern] === null ? "no pattern"
        : row[urlColumns.transaction] === null ? "no transaction" : "main";
}

// What a type of the filter means: [value, text, test of a row and its number].
function urlTypes(figures) {
    const lacking = new Set(figures.mix.post_without_body.urls);
    const { type, filtered, transaction, pattern, url } = urlColumns;
    const isMain = (row) => !row[filtered] && row[type] !== "inline";
    return [
        ["with", "main, with a transaction", (row) => isMain(row) && row[transaction] !== null],
        ["without", "main, without a transaction", (row) => isMain(row) && row[transaction] === null],
        ["no-pattern", "main, as no pattern fits", (row) => isMain(row) && row[pattern] === null],
        ["inline", "inline", (row) => !row[filtered] && row[type] === "inline"],
        ["filtered", "filtered", (row) => row[filtered]],
        ["no-body", "POST or PUT without a body file", (row, at) => lacking.has(at)],
        ["cut", "with its query cut off", (row) => /[?;]\*$/.test(row[url])],
    ];
}

class UrlOrder {
    constructor(rows) {
        this.rows = rows;
        this.orders = new Map(); // by "column direction": all rows, sorted
        this.texts = null;       // what is searched in, row by row; made when it is first needed
    }

    // The numbers of the rows that pass all tests and hold all words, in an order.
    select(tests, words, column, direction) {
        const { rows } = this;
        const texts = words.length === 0 ? null : this.searched();
        return this.sorted(column, direction).filter((at) => tests.every((test) => test(rows[at], at))
            && words.every((word) => texts[at].includes(word)));
    }

    searched() {
        const { method, host, url, transaction, pattern } = urlColumns;
        this.texts ??= this.rows.map((row) => `${row[method]} ${row[host]}${row[url]} ${row[transaction] ?? ""} `
            .toLowerCase() + (row[pattern] ?? "").toLowerCase());
        return this.texts;
    }

    sorted(column, direction) {
        const key = `${column} ${direction}`;
        if (!this.orders.has(key)) {
            this.orders.set(key, this.sort(urlColumns[column], direction === "descending" ? -1 : 1));
        }
        return this.orders.get(key);
    }

    // Rows that are equal stay in the order of url.list; those without a value come last.
    sort(column, sign) {
        const values = this.rows.map(column === urlColumns.type ? urlKind : (row) => row[column]);
        const compare = (a, b) => (a === b ? 0 : a === null ? sign : b === null ? -sign : a < b ? -1 : 1);
        return Uint32Array.from(values.keys()).sort((a, b) => sign * compare(values[a], values[b]) || a - b);
    }
}
