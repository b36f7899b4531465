// Makes the page's elements. Every text goes in as text: none is ever read as HTML.

// An element with properties ("class" and "aria-..." by their attribute names) and children: elements,
// texts, numbers; null and undefined are left out.
function make(tag, properties, ...children) {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(properties ?? {})) {
        if (name.startsWith("on")) {
            element.addEventListener(name.slice(2), value);
        } else if (value !== null && value !== undefined && value !== false) {
            element.setAttribute(name, value === true ? "" : value);
        }
    }
    element.append(...children.flat(Infinity).filter((child) => child !== null && child !== undefined)
        .map((child) => (typeof child === "string" ? visible(child) : child)));
    return element;
}

// Characters that turn, hide or end what stands beside them, in a form that can be seen.
const harmful = new RegExp("[\\u0000-\\u001f\\u007f-\\u009f\\u00ad\\u061c\\u200b-\\u200f\\u2028-\\u202e\\u2060-\\u206f"
    + "\\ufeff\\ufff9-\\ufffb\\u{e0000}-\\u{e007f}]", "gu");

function visible(text) {
    return text.replace(harmful, (character) => `\\u${character.codePointAt(0).toString(16).padStart(4, "0")}`);
}

const byId = (id) => document.getElementById(id);

// A bar of a part, 0 to 1, that begins at another one. Only for the eye: the number stands beside it.
function bar(part, kind = "", begin = 0) {
    const fill = make("span", { class: `fill ${kind}` });
    fill.style.width = `${100 * part}%`;
    fill.style.marginLeft = `${100 * begin}%`;
    return make("span", { class: "track", "aria-hidden": "true" }, fill);
}

// A table. columns: [{title, kind}], kind: "number", "logged" (a text of the logs that may break
// anywhere), "name", "bar-cell" or none; rows: arrays of cells as `make` takes children. The first cell
// of a row names it.
function plainTable(caption, columns, rows) {
    const head = make("tr", {}, columns.map((column) =>
        make("th", { scope: "col", class: column.kind }, column.title)));
    const body = rows.map((row) => make("tr", {}, row.map((cell, at) =>
        at === 0
            ? make("th", { scope: "row", class: columns[at].kind }, cell)
            : make("td", { class: columns[at].kind }, cell))));
    return make("div", { class: "scroller", tabindex: "0", role: "region", "aria-label": caption },
        make("table", {},
            make("caption", { class: "unseen" }, caption),
            make("thead", {}, head),
            make("tbody", {}, body)));
}

// A table that shows its first rows until more are asked for. `rowAt` makes the cells of a row.
function growingTable(caption, columns, count, rowAt, first = 12) {
    const holder = make("div");
    const limit = 2000; // rows of a table that stays quick
    const show = (shown) => {
        const rows = Array.from({ length: Math.min(shown, count) }, (_, at) => rowAt(at));
        holder.replaceChildren(plainTable(caption, columns, rows));
        if (shown < count && shown < limit) {
            const all = Math.min(count, limit);
            const label = all < count ? `Show the first ${number(all)} of ${number(count)}`
                                      : `Show all ${number(count)}`;
            holder.append(make("button", { type: "button", class: "more", onclick: () => {
                show(all);
                holder.querySelector(".scroller").focus({ preventScroll: true }); // the button is gone
            } }, label));
        } else if (shown < count) {
            holder.append(make("p", { class: "note" }, `${number(count - limit)} more are left out here.`));
        }
    };
    show(first);
    return holder;
}

// Closed until it is opened, and only then made.
function lazyDetails(summary, makeContent) {
    const details = make("details", {}, make("summary", {}, summary));
    details.addEventListener("toggle", () => details.append(makeContent()), { once: true });
    return details;
}
