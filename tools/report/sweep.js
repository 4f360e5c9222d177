// The page of a parameter sweep.
"use strict";

const sweep = report;
const { parameter, points, suggestion } = sweep;
const charts = [];
const chartRows = [
  { title: "found, %", value: (point) => 100 * point.foundShare, range: [-4, 104] },
  { title: "jitter, px", value: (point) => point.jitterPx },
];

const step = points.length > 1 ? points[1].value - points[0].value : 1;

function showSummary() {
  byId("title").textContent = `Sweep of ${settingName(parameter)}`;
  byId("subject").textContent = `${inWords(sweep.joint)}: ${parameter.meaning}; default ${withUnit(parameter.default, parameter.unit)}`;
  byId("maker").textContent = `zelweld ${sweep.version}`;
  byId("name").textContent = settingName(parameter);
  byId("too-low").textContent = parameter.tooLow;
  byId("too-high").textContent = parameter.tooHigh;
  const good = suggestion ? `${plain(points[suggestion.first].value)} to ${plain(points[suggestion.last].value)}` : "none";
  byId("summary").append(
    card(suggestion ? plain(points[suggestion.middle].value) : "none", `suggestion for ${parameter.name}`, suggestion ? "found" : "lost"),
    card(good, "widest good range"),
    ...(sweep.objection ? [card("no suggestion", sweep.objection)] : []),
    card(points.length, "values"),
    card(sweep.frames, "frames"));
}

// Tints the good range, half a step beyond its ends, and marks the suggestion.
function drawUnderlay(context, area, chart) {
  if (!suggestion) return;
  const edge = (value) => chart.toDomXCoord(value);
  const left = Math.max(area.x, edge(points[suggestion.first].value - step / 2));
  const right = Math.min(area.x + area.w, edge(points[suggestion.last].value + step / 2));
  context.fillStyle = colour("found");
  context.globalAlpha = 0.16;
  context.fillRect(left, area.y, right - left, area.h);
  context.globalAlpha = 1;
  context.fillRect(edge(points[suggestion.middle].value) - 1, area.y, 2, area.h);
}

function showReadout(index) {
  const point = points[index];
  byId("readout").textContent =
    `${parameter.name} ${plain(point.value)} · found ${number(100 * point.foundShare, 1)} % · jitter ${number(point.jitterPx, 3)} px`;
}

function makeChart(row) {
  const plot = element("div", "plot");
  byId("charts").append(element("div", "chart tall", null, element("div", "title", row.title), plot));
  return new Dygraph(plot, points.map((point) => [point.value, row.value(point)]), {
    colors: [colour("accent")],
    axisLineColor: colour("line"),
    gridLineColor: colour("line"),
    labels: [parameter.name, row.title],
    dateWindow: [points[0].value - step / 2, points[points.length - 1].value + step / 2],
    valueRange: row.range || null,
    includeZero: true,
    strokeWidth: 1.5,
    drawPoints: points.length <= 200,
    pointSize: 2.5,
    axes: { y: { axisLabelWidth: 58, pixelsPerLabel: 30 } },
    underlayCallback: drawUnderlay,
    highlightCallback: (event, x, seen, index) => showReadout(index),
  });
}

function tableRow(point) {
  const bar = point.foundShare > 0 ? element("div", "bar found") : null;
  if (bar) bar.style.width = `${100 * point.foundShare}%`;
  const weight = point.isGood ? "number changed" : "number";
  return element("tr", "", null,
    element("td", weight, plain(point.value)),
    element("td", weight, `${number(100 * point.foundShare, 1)} %`),
    element("td", "share", null, bar),
    element("td", weight, number(point.jitterPx, 3)),
    element("td", "number", number(point.confidence, 2)),
    element("td", "number", point.wrong ?? "–"),
    element("td", "number", point.longestLoss),
    element("td", "quiet", point.reason));
}

showSummary();
chartRows.filter((row) => points.some((point) => row.value(point) !== null)).forEach((row) => charts.push(makeChart(row)));
byId("rows").append(...points.map(tableRow));
matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
  charts.forEach((chart) => chart.updateOptions({ colors: [colour("accent")], axisLineColor: colour("line"), gridLineColor: colour("line") }));
});
