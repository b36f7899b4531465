// Light or dark: what the system says until the reader chooses. Runs before the page is drawn.
"use strict";

const theme = (() => {
    const key = "zvr_al_report.theme";
    const system = matchMedia("(prefers-color-scheme: dark)");
    const listeners = [];

    // A page of a file may not be allowed to keep anything.
    const remembered = () => {
        try {
            return localStorage.getItem(key);
        } catch {
            return null;
        }
    };
    const remember = (choice) => {
        try {
            localStorage.setItem(key, choice);
        } catch {
            // then it holds for this time
        }
    };

    let choice = ["light", "dark"].includes(remembered()) ? remembered() : null;
    let isPrinted = false;

    const current = () => (isPrinted ? "light" : choice ?? (system.matches ? "dark" : "light"));
    const apply = () => {
        document.documentElement.dataset.theme = current();
        listeners.forEach((listener) => listener());
    };

    system.addEventListener("change", apply);
    addEventListener("beforeprint", () => {
        isPrinted = true;
        apply();
    });
    addEventListener("afterprint", () => {
        isPrinted = false;
        apply();
    });
    document.documentElement.dataset.theme = current();

    return {
        current,
        isPrinted: () => isPrinted,
        toggle() {
            choice = current() === "dark" ? "light" : "dark";
            remember(choice);
            apply();
        },
        onChange: (listener) => listeners.push(listener),
    };
})();
