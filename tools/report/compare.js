// The page of a comparison of two jobs.
"use strict";

const { a, b, distance, differing } = report;

function showSummary() {
  byId("subject").textContent = `A: ${a.name} · B: ${b.name} · ${report.frames} frames`;
  byId("maker").textContent = `zelweld ${report.version}`;
  byId("summary").append(
    card(`${number(100 * a.foundShare, 1)} %`, "found by A"),
    card(`${number(100 * b.foundShare, 1)} %`, "found by B"),
    card(report.onlyA, "frames found by A alone"),
    card(report.onlyB, "frames found by B alone"),
    card(distance === null ? "-" : `${number(distance, 2)} px`, "median distance of the seams"));
}

function figureRow([name, value]) {
  return element("tr", "", null, element("td", "", name), element("td", "number", value(a)), element("td", "number", value(b)));
}

function reasonRow(reason) {
  return element("tr", "", null,
    element("td", "number", reason.a), element("td", "number", reason.b), element("td", "", reason.reason));
}

function pictureOf(side, name, file) {
  const image = element("img");
  image.src = side.picture;
  image.alt = `${name}: ${file}, ${side.state}`;
  const text = element("figcaption", side.state, null,
    element("span", "mark"), document.createTextNode(` ${name}: ${side.state}. ${side.state === "found" ? "" : side.sentence}`));
  return element("figure", "side", null, image, text);
}

function frameRow(frame) {
  const apart = frame.distance === null ? "" : `, seams ${number(frame.distance, 2)} px apart`;
  return element("article", "pair", null,
    element("h3", "", `Frame ${frame.frame}: ${frame.file}${apart}`),
    pictureOf(frame.a, "A", frame.file),
    pictureOf(frame.b, "B", frame.file));
}

showSummary();
byId("figures").append(...[
  ["frames found", (side) => side.found],
  ["losses", (side) => side.losses],
  ["longest loss, frames", (side) => side.longestLoss],
  ["jitter, px", (side) => number(side.jitterPx, 3)],
].map(figureRow));
byId("reasons").append(...report.reasons.map(reasonRow));
byId("selection").textContent = report.selection;
byId("frames").append(...differing.map(frameRow));
