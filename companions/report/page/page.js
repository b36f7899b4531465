// Fills the page with the figures that it carries.

function begin() {
    const figures = JSON.parse(byId("figures").textContent);
    showMasthead(figures);
    showFreshness(figures);
    showTiles(figures);
    showSettings(figures);
    showFunnel(figures.funnel);
    showMix(figures);
    urlTable.start(figures);
    showSources(figures);
    setChartDefaults();
    showOverTime(figures);
    showSessions(figures);
}

function beginTools() {
    const button = byId("theme");
    const name = () => {
        button.textContent = theme.current() === "dark" ? "Light" : "Dark";
        button.setAttribute("aria-label", `Switch to ${button.textContent.toLowerCase()} colours`);
    };
    button.addEventListener("click", theme.toggle);
    button.hidden = false;
    name();
    theme.onChange(name);
    theme.onChange(repaintAll);
    byId("print").addEventListener("click", () => print());
    byId("print").hidden = false;
}

begin();
beginTools();
