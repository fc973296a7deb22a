"use strict";
// Runs inside the page, uses it as a person would, and leaves what it found in an element "results".
(() => {
    const results = {};
    const nextFrame = () => new Promise((done) => setTimeout(done, 30));
    const entries = () => JSON.parse(byId("tracks").textContent);
    const number = (text) => Number(text.replace(/\D/g, ""));
    const shownNow = () => number(byId("count").textContent.split(" of ")[0]);

    async function type(id, value) {
        byId(id).value = value;
        byId(id).dispatchEvent(new Event("input", { bubbles: true }));
        await nextFrame();
    }

    async function press(key) {
        document.activeElement.dispatchEvent(new KeyboardEvent("keydown", { key, bubbles: true, cancelable: true }));
        await nextFrame();
    }

    // What the list holds from top to bottom, by looking at every row of it.
    async function list(read) {
        const all = new Map();
        for (let top = 0; ; top += grid.clientHeight / 2) {
            grid.scrollTop = top;
            grid.dispatchEvent(new Event("scroll"));  // which comes with a frame; without a window there is none
            await nextFrame();
            for (const row of rows.querySelectorAll(".row")) all.set(Number(row.getAttribute("aria-rowindex")), read(row));
            if (top > rows.offsetHeight) break;
        }
        grid.scrollTop = 0;
        await nextFrame();
        return [...all].sort(([a], [b]) => a - b).map(([, value]) => value);
    }

    const orderOf = (row) => Number(row.dataset.order);

    async function sorts() {
        for (const way of ["ascending", "descending"]) {
            byId("columns").querySelector("[data-column=tempo] button").click();
            results[way] = await list((row) => row.querySelector(".tempo").textContent);
        }
        byId("sort").value = "path";
        byId("sort").dispatchEvent(new Event("change"));
        await nextFrame();
    }

    async function searches() {
        await type("search", "ZOE sondag");
        results.found = await list(orderOf);
        await type("search", "<script>");
        results.hostile = await list((row) => row.querySelector(".title").textContent);
        await type("search", "no such thing anywhere");
        results.nothing = [shownNow(), byId("nothing").hidden];
        await type("search", "");
    }

    async function filters() {
        await type("filter", "disagree");
        results.disagree = await list(orderOf);
        await type("tolerance", "500");
        results.disagreeLoosely = await list(orderOf);
        await type("filter", "failed");
        results.failed = await list((row) => row.textContent);
        await type("filter", "all");
    }

    // By lane, where the tips of the flags are drawn and how wide the drawing is.
    function drawnCues(svg) {
        const tip = (mark) => [mark.getBBox().x, mark.ownerSVGElement.viewBox.baseVal.width];
        return Object.fromEntries([...svg.querySelectorAll(".lane")].map((lane) =>
            [lane.dataset.lane, [...lane.querySelectorAll(".cue .mark")].map(tip)]));
    }

    async function draws() {
        results.drawn = await list((row) => [orderOf(row), row.querySelector("svg") && drawnCues(row.querySelector("svg"))]);
        results.isClean = !document.querySelector("#rows b, #rows i, #rows script") && !window.alerted;
    }

    async function keys() {
        grid.focus();
        for (const key of ["Home", "ArrowDown", "ArrowDown", "Enter"]) await press(key);
        results.dialog = [byId("details").open, byId("details-title").textContent];
        byId("details").querySelector("button").click();
        await nextFrame();
        await press("End");
        results.end = [byId("details").open, grid.getAttribute("aria-activedescendant")];
    }

    async function run() {
        while (!byId("count").textContent.endsWith("tracks") || byId("count").textContent.startsWith("Reading")) await nextFrame();
        results.count = shownNow();
        results.rows = rows.querySelectorAll(".row").length;
        results.overflow = document.documentElement.scrollWidth - innerWidth;
        if (!location.search.includes("quick")) for (const one of [sorts, searches, filters, draws, keys]) await one();
    }

    run().catch((error) => { results.error = String(error.stack); }).then(() => {
        const found = document.createElement("pre");
        found.id = "results";
        found.textContent = JSON.stringify(results);
        document.body.append(found);
    });
})();
