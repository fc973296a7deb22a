"use strict";
// The data stands in three JSON blocks: the tracks, one a line, each with what `zaltag show --json` tells of its file
// and what the collections hold of it; the covers, which several tracks share; and what the page was made of.
// Every text of a file gets into the page as text, never as markup.

const byId = (id) => document.getElementById(id);
const about = JSON.parse(byId("about").textContent);
const covers = JSON.parse(byId("covers").textContent);
const grid = byId("grid");
const rows = byId("rows");
const narrow = matchMedia("(max-width: 760px)");
const collator = new Intl.Collator(undefined, { numeric: true, sensitivity: "base" });

const LANES = [
    { id: "serato", name: "Serato", letter: "S" },
    { id: "zal", name: "Own record", letter: "O" },
    { id: "rekordbox", name: "Rekordbox", letter: "R" },
    { id: "traktor", name: "Traktor", letter: "T" },
].filter((lane) => !(lane.id in about) || about[lane.id] !== null);

const COLUMNS = [
    { id: "path", name: "Folder order", value: (track) => track.order, isHidden: true },
    { id: "title", name: "Title", value: (track) => track.title },
    { id: "artist", name: "Artist", value: (track) => track.file.artist },
    { id: "key", name: "Key", value: (track) => track.key },
    { id: "tempo", name: "BPM", value: (track) => track.tempo || null },
    { id: "energy", name: "Energy", value: (track) => track.energy || null },
    { id: "comment", name: "Comment", value: (track) => track.file.comment },
    { id: "cues", name: "Cues", value: (track) => track.cueCount },
];

const state = { tracks: [], shown: [], expected: 0, sort: "path", isReversed: false, chosen: 0, isLoaded: false };

// --- elements

function make(name, className, ...children) {
    const element = document.createElement(name);
    if (className) element.className = className;
    element.append(...children.filter((child) => child !== null && child !== undefined));
    return element;
}

function draw(name, attributes, ...children) {
    const element = document.createElementNS("http://www.w3.org/2000/svg", name);
    for (const [key, value] of Object.entries(attributes)) element.setAttribute(key, value);
    element.append(...children);
    return element;
}

function timeText(seconds, digits = 3) {
    if (!Number.isFinite(seconds)) return "–";
    const unit = 10 ** digits;
    const whole = Math.round(Math.abs(seconds) * unit);
    const minutes = Math.floor(whole / unit / 60);
    const rest = ((whole - minutes * 60 * unit) / unit).toFixed(digits).padStart(digits ? digits + 3 : 2, "0");
    return `${seconds < 0 ? "−" : ""}${minutes}:${rest}`;
}

// --- tracks

// Eight hexadecimal digits, the first two without meaning; 7FFFFFFF stands for none.
function colorOf(text) {
    return /^[0-9A-F]{8}$/.test(text ?? "") && text !== "7FFFFFFF" ? "#" + text.slice(2) : null;
}

function seratoCues(file) {
    const marked = file.seratoMarker?.cuePoints ?? [];
    return file.seratoCuePoints.map(({ time, name }) => {
        const own = marked.find((cue) => Math.abs(cue.position / 1000 - time) < 0.002);
        return { time, name: name ?? "", end: null, color: colorOf(own?.color), isMemory: false };
    });
}

// The record counts in milliseconds.
function ownCues(record) {
    return (Array.isArray(record.cues) ? record.cues : []).map((cue) => (
        { time: Number(cue?.time ?? 0) / 1000, name: String(cue?.name ?? ""), end: null, color: null, isMemory: false }));
}

function rekordboxCues(track) {
    return track.cues.map((cue) => ({
        time: cue.start, name: cue.name, end: cue.end > cue.start ? cue.end : null, color: null, isMemory: cue.num === -1,
    }));
}

function traktorCues(track) {
    return track.cues.filter((cue) => cue.typeName !== "Grid").map((cue) => ({
        time: cue.startTime, name: cue.name, end: cue.length > 0 ? cue.startTime + cue.length : null, color: null,
        isMemory: false,
    }));
}

// Each lane's cue points; null for a lane that does not know the track.
function cuesOf({ file, rekordbox, traktor }) {
    return {
        serato: file.hasSeratoMetadata || file.seratoCuePoints.length ? seratoCues(file) : null,
        zal: file.zalCuePoints ? ownCues(file.zalCuePoints) : null,
        rekordbox: rekordbox ? rekordboxCues(rekordbox) : null,
        traktor: traktor ? traktorCues(traktor) : null,
    };
}

function folded(text) {
    return text.normalize("NFD").replace(/\p{M}/gu, "").toLowerCase();
}

function searchText(track) {
    const { file, cues } = track;
    const names = LANES.flatMap((lane) => (cues[lane.id] ?? []).map((cue) => cue.name));
    return folded([file.path, file.artist, file.title, file.album, file.genre, file.comment, file.grouping, file.year || "",
        track.key, track.tempo || "", ...names].filter((text) => text !== null && text !== "").join("\n"));
}

function fileName(path) {
    return path.slice(path.lastIndexOf("/") + 1);
}

function trackOf(entry, order) {
    const { file } = entry;
    if (file.error !== undefined) {
        return { ...entry, order, title: fileName(file.path), key: null, cues: {}, cueCount: 0, text: folded(file.path) };
    }
    const track = {
        ...entry, order,
        title: file.title || fileName(file.path),
        key: file.initialKey || file.zalKey?.key || null,
        tempo: file.tempo || Math.round((Number(file.zalBeatGrid?.tempo) || 0) * 100) / 100,
        energy: file.energyLevel || Number(file.zalEnergy?.energyLevel) || 0,
        cues: cuesOf(entry),
    };
    track.cueCount = Math.max(0, ...LANES.map((lane) => track.cues[lane.id]?.length ?? 0));
    track.text = searchText(track);
    return track;
}

// Rekordbox keeps two lists; the memory cues stand for the track only where it has no hot cues.
function listToCompare(cues) {
    const hot = cues.filter((cue) => !cue.isMemory);
    return (hot.length ? hot : cues).slice().sort((a, b) => a.time - b.time);
}

function areSame(some, others, seconds) {
    return some.length === others.length && some.every((cue, i) =>
        Math.abs(cue.time - others[i].time) <= seconds + 1e-9 && cue.name === others[i].name);
}

// The names of lanes that hold the track and differ from the first of them that has cue points.
function lanesThatDiffer(track) {
    const seconds = Math.max(0, Number(byId("tolerance").value) || 0) / 1000;
    const lists = LANES.filter((lane) => track.cues[lane.id]).map((lane) => (
        { name: lane.name, cues: listToCompare(track.cues[lane.id]) }));
    const first = lists.find((list) => list.cues.length);
    if (!first) return [];
    const others = lists.filter((list) => list !== first && !areSame(first.cues, list.cues, seconds));
    return others.length ? [first.name, ...others.map((list) => list.name)] : [];
}

// --- beats, as lines of [start, step, count]

function runsOfBeats(beats) {
    const runs = [];
    for (let i = 0; i < beats.length;) {
        const step = i + 1 < beats.length ? beats[i + 1] - beats[i] : 0;
        let count = 1;
        while (i + count < beats.length && Math.abs(beats[i + count] - beats[i] - step * count) < 0.0005) ++count;
        runs.push([beats[i], step, count]);
        i += count;
    }
    return runs;
}

// Between two markers the beats lie evenly; behind the last one its tempo goes on.
function runsOfSerato(points) {
    return points.map((point, i) => {
        const next = points[i + 1];
        if (!next) return [point.position, point.tempo > 0 ? 60 / point.tempo : 0, Infinity];
        return [point.position, (next.position - point.position) / Math.max(1, point.beatsToNext), point.beatsToNext];
    });
}

function runsOf(track, lane) {
    const { file } = track;
    if (lane.id === "serato") return runsOfSerato(file.seratoGrid?.gridPoints ?? []);
    if (lane.id === "zal") return runsOfBeats(Array.isArray(file.zalBeatGrid?.beats) ? file.zalBeatGrid.beats.map(Number) : []);
    return track[lane.id]?.beatRuns ?? [];
}

function drawingOf(track) {
    if (track.drawing) return track.drawing;
    const runs = {};
    let length = 0;
    const reach = (time) => { if (Number.isFinite(time) && time > length) length = time; };
    for (const lane of LANES) {
        runs[lane.id] = runsOf(track, lane).filter(([start, step]) => Number.isFinite(start) && Number.isFinite(step));
        for (const [start, step, count] of runs[lane.id]) reach(Number.isFinite(count) ? start + step * (count - 1) : start);
        for (const cue of track.cues[lane.id] ?? []) reach(cue.end ?? cue.time);
    }
    track.drawing = { runs, length: length > 0 ? length * 1.02 : 1 };
    return track.drawing;
}

// --- time lines

const GUTTER = { row: 16, details: 84 };

// Ticks for the beats in view: every one, or every 4th, 16th and so on where they would touch.
function beatPath(runs, view, top, bottom) {
    let path = "";
    for (const [start, step, count] of runs) {
        let stride = 1;
        while (step > 0 && step * stride * view.scale < 5) stride *= 4;
        const last = step > 0 ? Math.min(count - 1, Math.ceil((view.end - start) / step)) : 0;
        const first = step > 0 ? Math.max(0, Math.floor((view.start - start) / step / stride) * stride) : 0;
        for (let i = first; i <= last; i += stride) path += `M${view.x(start + i * step).toFixed(1)} ${top}V${bottom}`;
    }
    return path;
}

function drawCue(cue, view, top, height, isLabelled) {
    const x = view.x(cue.time);
    const group = draw("g", { class: cue.isMemory ? "cue memory" : "cue", "data-time": cue.time });
    if (cue.color) group.style.setProperty("--lane", cue.color);
    const title = draw("title", {});
    title.textContent = `${timeText(cue.time)} ${cue.name}`;
    group.append(title);
    if (cue.end !== null) {
        const width = Math.max(1, view.x(cue.end) - x);
        group.append(draw("rect", { class: "loop", x, y: top + 1, width, height: height - 2 }));
    }
    const flag = Math.min(7, height / 2);
    const points = `M${x} ${top + height}V${top + 1}h${flag + 1}l${-flag / 2} ${flag / 2}l${flag / 2} ${flag / 2}h${-flag}V${top + height}z`;
    group.append(draw("path", { class: "mark", d: points }));
    if (isLabelled && cue.name) {
        const label = draw("text", { class: "label", x: x + flag + 4, y: top + height / 2 - 3 });
        label.textContent = cue.name;
        group.append(label);
    }
    return group;
}

// A label that would run into the next cue point is cut there.
function cutLabels(cues, view) {
    const sorted = cues.slice().sort((a, b) => a.time - b.time);
    return sorted.map((cue, i) => {
        const room = (sorted[i + 1] ? view.x(sorted[i + 1].time) : view.width) - view.x(cue.time) - 14;
        const letters = Math.floor(room / 6.2);
        const isCut = cue.name.length > letters;
        return { ...cue, name: !isCut ? cue.name : letters > 2 ? cue.name.slice(0, letters - 1) + "…" : "", full: cue.name };
    });
}

function viewOf(start, end, left, width) {
    const scale = (width - left - 4) / (end - start);
    return { start, end, scale, width, x: (time) => left + (time - start) * scale };
}

function drawLane(track, lane, view, top, height, isLarge) {
    const group = draw("g", { class: `lane ${lane.id}`, "data-lane": lane.id });
    const cues = track.cues[lane.id];
    const name = draw("text", { class: "lane-name", x: isLarge ? 6 : 1, y: top + height / 2 + 4 });
    name.textContent = isLarge ? lane.name : lane.letter;
    const left = view.x(view.start);
    group.append(draw("line", { class: "track-line", x1: left, x2: view.width, y1: top + height - 0.5, y2: top + height - 0.5 }));
    group.append(draw("path", { class: "beats", d: beatPath(drawingOf(track).runs[lane.id], view, top + height * 0.72, top + height - 1) }));
    const inView = (cues ?? []).filter((cue) => cue.time <= view.end && (cue.end ?? cue.time) >= view.start);
    const clipped = draw("g", isLarge ? { "clip-path": "url(#time)" } : {});
    for (const cue of isLarge ? cutLabels(inView, view) : inView) clipped.append(drawCue(cue, view, top, height, isLarge));
    group.append(clipped, name);
    if (!cues && isLarge) {
        const absent = draw("text", { x: left + 4, y: top + height / 2 + 4 });
        absent.textContent = about[lane.id] ? "not in the collection" : "none";
        group.append(absent);
    }
    return group;
}

function describe(track) {
    return LANES.map((lane) => `${lane.name}: ${track.cues[lane.id]?.length ?? "no"} cue points`).join(", ");
}

function drawTimeline(track, width, laneHeight, view, isLarge) {
    const axis = isLarge ? 18 : 0;
    const height = LANES.length * laneHeight + axis;
    const svg = draw("svg", { viewBox: `0 0 ${width} ${height}`, height, role: "img", "aria-label": describe(track) });
    if (isLarge) {
        const left = view.x(view.start);
        const shape = draw("rect", { x: left - 1, y: 0, width: Math.max(0, width - left), height });
        svg.append(draw("clipPath", { id: "time" }, shape), ...drawAxis(view, height));
    }
    LANES.forEach((lane, i) => svg.append(drawLane(track, lane, view, i * laneHeight, laneHeight, isLarge)));
    return svg;
}

function drawAxis(view, bottom) {
    const steps = [0.05, 0.1, 0.25, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 1800, 3600];
    const step = steps.find((one) => one * view.scale >= 70) ?? (view.end - view.start) / 4;
    const texts = [];
    for (let i = Math.ceil(view.start / step); i * step <= view.end; ++i) {
        const text = draw("text", { x: view.x(i * step), y: bottom - 5, "text-anchor": i === 0 ? "start" : "middle" });
        text.textContent = timeText(i * step, step < 1 ? 2 : 0);
        texts.push(text);
    }
    return texts;
}

// --- the list

function visibleTracks() {
    const words = folded(byId("search").value).split(/\s+/).filter(Boolean);
    const fits = {
        all: () => true,
        disagree: (track) => lanesThatDiffer(track).length > 0,
        empty: (track) => track.file.error === undefined && track.cueCount === 0,
        failed: (track) => track.file.error !== undefined,
    }[byId("filter").value];
    return state.tracks.filter((track) => words.every((word) => track.text.includes(word)) && fits(track));
}

// What a file does not have comes last, in both directions.
function sorted(tracks) {
    const { value } = COLUMNS.find((column) => column.id === state.sort);
    const sign = state.isReversed ? -1 : 1;
    const isAbsent = (one) => one === null || one === undefined || one === "";
    return tracks.map((track) => [value(track), track]).sort(([a, one], [b, other]) => {
        if (isAbsent(a) || isAbsent(b)) return isAbsent(a) - isAbsent(b) || one.order - other.order;
        const difference = typeof a === "number" && typeof b === "number" ? a - b : collator.compare(a, b);
        return sign * difference || one.order - other.order;
    }).map(([, track]) => track);
}

function update() {
    const chosen = state.shown[state.chosen];
    state.shown = sorted(visibleTracks());
    state.chosen = Math.max(0, state.shown.indexOf(chosen));
    const total = state.tracks.length.toLocaleString();
    const number = state.shown.length.toLocaleString();
    byId("count").textContent = !state.isLoaded ? `Reading, ${total} of ${state.expected.toLocaleString()} tracks`
        : number === total ? `${total} tracks` : `${number} of ${total} tracks`;
    byId("nothing").hidden = state.shown.length > 0 || !state.isLoaded;
    grid.setAttribute("aria-rowcount", state.shown.length + 1);
    for (const cell of byId("columns").querySelectorAll("[data-column]")) {
        cell.removeAttribute("aria-sort");
        if (cell.dataset.column === state.sort) cell.setAttribute("aria-sort", state.isReversed ? "descending" : "ascending");
        cell.querySelector(".arrow").textContent = cell.dataset.column !== state.sort ? "" : state.isReversed ? " ↑" : " ↓";
    }
    byId("tolerance-label").hidden = byId("filter").value !== "disagree";
    byId("sort").value = state.sort;
    byId("direction").textContent = state.isReversed ? "↑" : "↓";
    render(true);
}

function rowHeight() {
    return parseFloat(getComputedStyle(document.documentElement).getPropertyValue("--row"));
}

const inPlace = new Map(); // index to row

// Rows exist only where they can be seen.
function render(isFresh = false) {
    const height = rowHeight();
    rows.style.height = `${state.shown.length * height}px`;
    if (isFresh) {
        for (const row of inPlace.values()) row.remove();
        inPlace.clear();
    }
    const above = grid.scrollTop - rows.offsetTop;
    const first = Math.max(0, Math.floor(above / height) - 3);
    const last = Math.min(state.shown.length - 1, Math.ceil((above + grid.clientHeight) / height) + 3);
    for (const [index, row] of inPlace) {
        if (index >= first && index <= last) continue;
        row.remove();
        inPlace.delete(index);
    }
    const width = laneWidth();
    for (let index = first; index <= last; ++index) {
        if (inPlace.has(index)) continue;
        const row = makeRow(state.shown[index], index, width);
        row.style.top = `${index * height}px`;
        inPlace.set(index, row);
        rows.append(row);
    }
    markChosen();
}

function laneWidth() {
    return Math.max(120, narrow.matches ? grid.clientWidth - 24 : byId("columns").lastElementChild.clientWidth);
}

function cell(className, ...children) {
    const element = make("div", className, ...children);
    element.setAttribute("role", "gridcell");
    return element;
}

function coverOf(track) {
    if (track.cover === null || track.cover === undefined) return cell("cover", "♪");
    const image = make("img");
    image.src = covers[track.cover];
    image.alt = "";
    return cell("cover", image);
}

function makeRow(track, index, width) {
    const { file } = track;
    const row = make("div", "row");
    row.id = `row-${index}`;
    row.dataset.order = track.order;
    row.setAttribute("role", "row");
    row.setAttribute("aria-rowindex", index + 2);
    const artist = file.error !== undefined ? make("div", "warning", file.error) : make("div", "artist", file.artist ?? "");
    const differing = lanesThatDiffer(track);
    const mark = differing.length ? make("span", "warning", " ≠") : null;
    if (mark) mark.title = `${differing.join(", ")} differ`;
    const lanes = cell("lanes");
    if (file.error === undefined) {
        const view = viewOf(0, drawingOf(track).length, GUTTER.row, width);
        lanes.append(drawTimeline(track, width, Math.min(20, Math.floor(64 / LANES.length)), view, false));
    }
    row.append(coverOf(track), cell("text cut", make("div", "title", track.title), artist), cell("key number cut", track.key ?? ""),
        cell("tempo number", track.tempo ? String(track.tempo) : ""), cell("energy number", track.energy ? String(track.energy) : ""),
        cell("comment", file.comment ?? ""), cell("cues number", track.cueCount ? String(track.cueCount) : "", mark), lanes);
    return row;
}

function markChosen() {
    for (const [index, row] of inPlace) {
        row.classList.toggle("chosen", index === state.chosen);
        row.setAttribute("aria-selected", index === state.chosen);
    }
    if (inPlace.has(state.chosen)) grid.setAttribute("aria-activedescendant", `row-${state.chosen}`);
    else grid.removeAttribute("aria-activedescendant");
}

function choose(index) {
    state.chosen = Math.max(0, Math.min(state.shown.length - 1, index));
    const height = rowHeight();
    const top = state.chosen * height;
    const head = rows.offsetTop;
    if (top < grid.scrollTop) grid.scrollTop = top;
    if (top + height + head > grid.scrollTop + grid.clientHeight) grid.scrollTop = top + height + head - grid.clientHeight;
    render();
}

function sortBy(id) {
    state.isReversed = state.sort === id && !state.isReversed;
    state.sort = id;
    grid.scrollTop = 0;
    update();
}

// --- details

const details = { dialog: byId("details"), track: null, start: 0, end: 1, holder: null };

function field(name, value) {
    if (value === null || value === undefined || value === "" || value === 0) return null;
    return make("div", "", make("dt", "", name), make("dd", "", String(value)));
}

function fieldsOf({ file }) {
    const fields = [field("Album", file.album), field("Year", file.year), field("Genre", file.genre), field("Grouping", file.grouping),
        field("Key", file.initialKey), field("Key, own record", file.zalKey?.key), field("BPM", file.tempo),
        field("BPM, own record", file.zalBeatGrid?.tempo), field("Energy", file.energyLevel),
        field("Energy, own record", file.zalEnergy?.energyLevel), field("Modified by", file.modifiedBy)];
    const comments = file.allComments.map((one) => field(
        `Comment${one.isPrimary ? "" : ", another"}${one.lang ? `, ${one.lang}` : ""}`, one.comment));
    return make("dl", "fields", ...fields, ...comments);
}

function cueTable(track, lane) {
    const cues = track.cues[lane.id];
    if (!cues?.length) return null;
    // By time, as in the lanes above: a file lists memory cues apart.
    const lines = [...cues].sort((one, other) => one.time - other.time).map((cue) => {
        const swatch = make("span", "swatch");
        if (cue.color) swatch.style.setProperty("--lane", cue.color);
        const times = timeText(cue.time) + (cue.end === null ? "" : `–${timeText(cue.end)}`);
        return make("tr", "", make("td", "number", swatch, times), make("td", "", cue.name, cue.isMemory ? make("span", "kind", " memory") : null));
    });
    return make("section", lane.id, make("h3", "lane-name", lane.name), make("table", "", make("tbody", "", ...lines)));
}

function button(text, label, action) {
    const element = make("button", "", text);
    element.type = "button";
    element.setAttribute("aria-label", label);
    element.addEventListener("click", action);
    return element;
}

function zoom(factor, center = (details.start + details.end) / 2) {
    const length = drawingOf(details.track).length;
    const span = Math.min(length, Math.max(0.5, (details.end - details.start) * factor));
    const part = (center - details.start) / (details.end - details.start);
    move(center - part * span, span);
}

function move(start, span = details.end - details.start) {
    const length = drawingOf(details.track).length;
    details.start = Math.max(0, Math.min(length - span, start));
    details.end = details.start + span;
    drawDetails();
}

function drawDetails() {
    const width = details.holder.clientWidth;
    const left = narrow.matches ? GUTTER.details - 6 : GUTTER.details;
    const view = viewOf(details.start, details.end, left, width);
    details.holder.replaceChildren(drawTimeline(details.track, width, 42, view, true));
}

function addDragging(holder) {
    const secondsPerPixel = () => (details.end - details.start) / (holder.clientWidth - GUTTER.details);
    holder.addEventListener("wheel", (event) => {
        event.preventDefault();
        const x = event.clientX - holder.getBoundingClientRect().left - GUTTER.details;
        zoom(event.deltaY > 0 ? 1.25 : 0.8, details.start + Math.max(0, x) * secondsPerPixel());
    }, { passive: false });
    holder.addEventListener("pointerdown", (event) => holder.setPointerCapture(event.pointerId));
    holder.addEventListener("pointermove", (event) => {
        if (holder.hasPointerCapture(event.pointerId)) move(details.start - event.movementX * secondsPerPixel());
    });
}

function open(track) {
    if (!track) return;
    const { dialog } = details;
    const title = make("h2", "", track.title);
    title.id = "details-title";
    const text = make("div", "text", title, make("div", "artist", track.file.artist ?? ""), make("div", "path", track.file.path));
    const head = make("div", "head", coverOf(track), text, button("×", "Close", () => dialog.close()));
    dialog.replaceChildren(head);
    details.track = track;
    if (track.file.error !== undefined) {
        dialog.append(make("p", "warning", track.file.error));
        dialog.showModal();
        return;
    }
    const differing = lanesThatDiffer(track);
    if (differing.length) dialog.append(make("p", "warning", `These lanes differ: ${differing.join(", ")}`));
    details.holder = make("div", "timeline");
    addDragging(details.holder);
    const controls = make("div", "zoom", button("−", "Zoom out", () => zoom(2)), button("+", "Zoom in", () => zoom(0.5)),
        button("◀", "Earlier", () => move(details.start - (details.end - details.start) / 2)),
        button("▶", "Later", () => move(details.start + (details.end - details.start) / 2)),
        make("span", "", "keys: + − ← →"));
    const lists = make("div", "lists", ...LANES.map((lane) => cueTable(track, lane)));
    dialog.append(fieldsOf(track), controls, details.holder, lists);
    details.start = 0;
    details.end = drawingOf(track).length;
    dialog.showModal();
    drawDetails();
}

function detailsKey(event) {
    const half = (details.end - details.start) / 2;
    const action = { "+": () => zoom(0.5), "-": () => zoom(2), ArrowLeft: () => move(details.start - half), ArrowRight: () => move(details.start + half) }[event.key];
    if (!action || !details.track || details.track.file.error !== undefined) return;
    event.preventDefault();
    action();
}

// --- what the user does

function gridKey(event) {
    if (event.target !== grid || event.ctrlKey || event.metaKey || event.altKey) return;
    const page = Math.max(1, Math.floor(grid.clientHeight / rowHeight()) - 1);
    const steps = { ArrowDown: 1, ArrowUp: -1, PageDown: page, PageUp: -page, Home: -Infinity, End: Infinity };
    if (event.key === "Enter" || event.key === " ") open(state.shown[state.chosen]);
    else if (event.key in steps) choose(state.chosen + steps[event.key]);
    else return;
    event.preventDefault();
}

function documentKey(event) {
    if (details.dialog.open) return;
    const search = byId("search");
    if (event.key === "/" && !["INPUT", "SELECT"].includes(document.activeElement?.tagName)) {
        event.preventDefault();
        search.select();
        search.focus();
    } else if (event.key === "Escape" && document.activeElement === search) {
        search.value = "";
        update();
        grid.focus();
    } else if (event.key === "Enter" && document.activeElement === search) {
        grid.focus();
    }
}

function makeColumns() {
    const sortButton = (column) => {
        const arrow = make("span", "arrow");
        const one = button("", `Sort by ${column.name}`, () => sortBy(column.id));
        one.append(column.name, arrow);
        const holder = make("span", "", one);
        holder.dataset.column = column.id;
        holder.setAttribute("role", "columnheader");
        return holder;
    };
    const byName = Object.fromEntries(COLUMNS.map((column) => [column.id, column]));
    byId("columns").append(make("div"), make("div", "", sortButton(byName.title), " ", sortButton(byName.artist)),
        ...["key", "tempo", "energy", "comment", "cues"].map((id) => make("div", "", sortButton(byName[id]))), make("div", "", "Time line"));
    byId("sort").append(...COLUMNS.map((column) => {
        const option = make("option", "", column.name);
        option.value = column.id;
        return option;
    }));
    byId("legend").append(...LANES.map((lane) => make("li", lane.id, make("b", "", lane.letter), lane.name)));
}

function listen() {
    for (const id of ["search", "filter", "tolerance"]) {
        byId(id).addEventListener("input", () => {
            grid.scrollTop = 0;
            update();
        });
    }
    byId("sort").addEventListener("change", (event) => {
        state.sort = event.target.value;
        state.isReversed = false;
        update();
    });
    byId("direction").addEventListener("click", () => {
        state.isReversed = !state.isReversed;
        update();
    });
    grid.addEventListener("scroll", () => render(), { passive: true });
    grid.addEventListener("keydown", gridKey);
    rows.addEventListener("click", (event) => {
        const row = event.target.closest(".row");
        if (!row) return;
        choose(Number(row.id.slice("row-".length)));
        open(state.shown[state.chosen]);
    });
    details.dialog.addEventListener("keydown", detailsKey);
    details.dialog.addEventListener("close", () => grid.focus());
    document.addEventListener("keydown", documentKey);
    new ResizeObserver(() => {
        render(true);
        if (details.dialog.open && details.holder?.isConnected) drawDetails();
    }).observe(grid);
}

// Reads the tracks a few milliseconds at a time, so that the page answers meanwhile.
function load() {
    const lines = byId("tracks").textContent.split("\n").slice(1, -1);
    state.expected = lines.length;
    let updated = -Infinity;
    const readSome = () => {
        const started = performance.now();
        while (state.tracks.length < lines.length && performance.now() - started < 12) {
            const order = state.tracks.length;
            state.tracks.push(trackOf(JSON.parse(lines[order].replace(/,$/, "")), order));
        }
        state.isLoaded = state.tracks.length === lines.length;
        if (state.isLoaded || performance.now() - updated > 250) {
            update();
            updated = performance.now();
        }
        if (!state.isLoaded) setTimeout(readSome);
    };
    readSome();
}

byId("made").textContent = `zaltag ${about.version}`;
makeColumns();
listen();
load();
