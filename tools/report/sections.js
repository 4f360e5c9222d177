// Summary, reasons, strip of frames and parameters; then the page is put together.
"use strict";

let chosenFilter = "all"; // "all", a state, or a reason

function showSummary() {
  const { frames, found, held, lost, wrong, longestLoss, medianMs, p95Ms } = report.summary;
  const share = frames > 0 ? (100 * found) / frames : 0;
  byId("subject").textContent = `${inWords(report.joint)}, seam point: ${report.position}`;
  byId("maker").textContent = `zelweld ${report.version}`;
  byId("summary").append(
    card(`${number(share, 1)} %`, `found: ${found} of ${frames} frames`, found === frames ? "found" : found === 0 ? "lost" : ""),
    card(held, "held: last seam repeated", held > 0 ? "held" : ""),
    card(lost, "lost", lost > 0 ? "lost" : ""),
    ...(wrong > 0 ? [card(wrong, "found, but wrong by their labels", "lost")] : []),
    card(longestLoss, "longest run not found, frames"),
    card(`${number(medianMs, 2)} ms`, "per frame, median"),
    card(`${number(p95Ms, 2)} ms`, "95 % of frames within"));
}

// The worst state among the frames of an entry.
function stateOf(entry) {
  const states = entry.frames.map((index) => report.frames[index].state);
  return [...stateNames].reverse().find((state) => states.includes(state));
}

function reasonRow(entry) {
  const example = entry.frames.find((index) => report.frames[index].state === "lost") ?? entry.frames[0];
  const bar = element("div", `bar ${stateOf(entry)}`);
  bar.style.width = `${(100 * entry.frames.length) / report.frames.length}%`;
  const row = element("tr", "", null,
    element("td", "", null, element("button", "", entry.reason)), // for the keyboard; its click is the row's
    element("td", "number", entry.frames.length),
    element("td", "share", null, bar),
    element("td", "quiet", explanation(report.frames[example]) + ` (frame ${numberOf(example)})`));
  row.dataset.reason = entry.reason;
  row.addEventListener("click", () => {
    choose(chosenFilter === entry.reason ? "all" : entry.reason);
    byId("frames").scrollIntoView({ behavior: "smooth" });
  });
  return row;
}

function showReasons() {
  byId("reason-table").tBodies[0].append(...reasonsByCount().map(reasonRow));
}

const mostLosses = 200; // listed; the timeline shows all

function lossRow({ from, to }) {
  const reasons = [...new Set(report.frames.slice(from, to + 1).map((frame) => frame.reason))];
  const open = element("button", "", numberOf(from)); // for the keyboard; its click is the row's
  open.setAttribute("aria-label", `Open frame ${numberOf(from)}`);
  const row = element("tr", "", null, element("td", "number", null, open), element("td", "number", numberOf(to)),
    element("td", "number", to - from + 1), element("td", "", reasons.join(", ")));
  row.addEventListener("click", () => openFrame(from));
  return row;
}

function showLosses() {
  const losses = lossesOf(report.frames);
  byId("loss-table").hidden = losses.length === 0;
  byId("loss-count").textContent = losses.length === 0 ? "None: every frame was found."
    : losses.length > mostLosses ? `The first ${mostLosses} of ${losses.length}.` : `${losses.length} in ${report.frames.length} frames.`;
  byId("loss-table").tBodies[0].append(...losses.slice(0, mostLosses).map(lossRow));
  const box = byId("go-number");
  box.min = numberOf(0);
  box.max = numberOf(report.frames.length - 1);
  byId("go-to").addEventListener("submit", (event) => {
    event.preventDefault();
    openFrame(Number(box.value) - report.firstFrame);
  });
}

function thumbnail(index) {
  const frame = report.frames[index];
  const image = element("img");
  image.src = report.details[index].thumbnail;
  image.alt = "";
  const caption = element("span", "", null, element("b", "", numberOf(index)),
    element("em", "", frame.reason === "found" ? "" : frame.reason));
  const made = element("button", `thumb ${frame.state}`, null, image, caption);
  made.dataset.frame = index;
  made.title = frame.sentence || frame.file;
  made.addEventListener("click", () => openFrame(index));
  return made;
}

function matches(frame, filter) {
  return filter === "all" || frame.state === filter || frame.reason === filter;
}

function pictured(filter) {
  return Object.keys(report.details).map(Number).sort((a, b) => a - b)
    .filter((index) => matches(report.frames[index], filter));
}

function choose(filter) {
  chosenFilter = filter;
  shownFrames = pictured(filter);
  byId("strip").replaceChildren(...shownFrames.map(thumbnail));
  for (const button of byId("filters").children) {
    button.setAttribute("aria-pressed", String(button.dataset.filter === filter));
  }
  for (const row of byId("reason-table").tBodies[0].rows) {
    const isChosen = row.dataset.reason === filter;
    row.classList.toggle("chosen", isChosen);
    row.querySelector("button").setAttribute("aria-pressed", String(isChosen));
  }
}

function showFilters() {
  const reasons = reasonsByCount().map((entry) => entry.reason).filter((reason) => reason !== "found");
  const filters = ["all", ...stateNames.filter((state) => pictured(state).length > 0),
    ...reasons];
  for (const filter of filters) {
    const button = element("button", "", `${filter} ${pictured(filter).length}`);
    button.dataset.filter = filter;
    button.addEventListener("click", () => choose(filter));
    byId("filters").append(button);
  }
}

function showStrip() {
  const count = Object.keys(report.details).length;
  byId("selection").textContent = count === report.frames.length
    ? "Click to enlarge; arrow keys go from frame to frame."
    : `Pictures of ${count} of ${report.frames.length} frames: ${report.selection}. Click to enlarge.`;
  showFilters();
  choose("all");
}

function parameterRow(parameter) {
  const isChanged = parameter.value !== parameter.default;
  return element("tr", "", null,
    element("td", "", settingName(parameter)),
    element("td", isChanged ? "number changed" : "number", String(parameter.value ?? "∞")),
    element("td", "", parameter.unit),
    element("td", "number", String(parameter.default ?? "∞")),
    element("td", "quiet", parameter.range),
    element("td", "", parameter.meaning));
}

function showParameters() {
  for (const [title, parameters] of [["Joint", report.parameters], ["Tracker", report.tracker]]) {
    const heading = element("td", "group", title);
    heading.colSpan = 6;
    byId("parameter-rows").append(element("tr", "", null, heading), ...parameters.map(parameterRow));
  }
}

showSummary();
showLosses();
showReasons();
showStrip();
showParameters();
wireViewer();
showTimeline();
openLinkedFrame();
