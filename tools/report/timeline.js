// Ribbon and charts over the frames, all with the same zoom.
"use strict";

const axisWidthPx = 62; // left of every plot, so that ribbon and charts line up
const rightGapPx = 8;
const charts = [];
const baseRows = [
  { title: "seam x, px", value: (frame) => frame.x, decimals: 1 },
  { title: "seam y, px", value: (frame) => frame.y, decimals: 1 },
  { title: "stripe points", value: (frame) => frame.points, fromZero: true },
  { title: "time, ms", value: (frame) => frame.ms, fromZero: true },
];

// A chart for each thing that is measured of the joint, and for each test with its limit.
const measureRows = report.measures.map(({ name, unit }, column) => (
  { title: unit ? `${name}, ${unit}` : name, value: (frame) => frame.measured[column] }));

function testChart(test, number) {
  const find = (frame) => frame.tests.find(([id]) => id === number);
  return {
    title: `${test.way ? `${test.way}: ` : ""}${test.name}${test.unit ? `, ${test.unit}` : ""}; must be ${limitSigns[test.kind]} the line` +
      (test.parameter ? `, ${test.parameter}` : ""),
    value: (frame) => find(frame)?.[1] ?? null,
    limit: (frame) => find(frame)?.[2] ?? null,
  };
}

function lastIndex() {
  return report.frames.length - 1;
}

function visibleRange() {
  return charts.length > 0 ? charts[0].xAxisRange() : [-0.5, lastIndex() + 0.5];
}

function frameAt(x) {
  return Math.max(0, Math.min(lastIndex(), Math.round(x)));
}

function showReadout(index) {
  const frame = report.frames[index];
  const place = frame.x === null ? "" : ` · x ${number(frame.x, 1)} · y ${number(frame.y, 1)}`;
  const reason = frame.sentence ? ` · ${explanation(frame)}` : "";
  byId("readout").textContent =
    `frame ${numberOf(index)} · ${frame.state}${place} · ${frame.points} points · ${number(frame.ms, 2)} ms${reason}`;
}

// Tints runs of frames that were not found, and marks where a new sequence begins.
function drawUnderlay(context, area, chart) {
  const edge = (x) => chart.toDomXCoord(x);
  for (const state of ["held", "lost"]) {
    context.fillStyle = colour(`${state}-tint`);
    for (let begin = 0; begin < report.frames.length; ++begin) {
      if (report.frames[begin].state !== state) continue;
      let end = begin;
      while (end < lastIndex() && report.frames[end + 1].state === state) ++end;
      context.fillRect(edge(begin - 0.5), area.y, Math.max(1, edge(end + 0.5) - edge(begin - 0.5)), area.h);
      begin = end;
    }
  }
  context.fillStyle = colour("quiet");
  report.frames.forEach((frame, index) => {
    if (frame.startsSequence && index > 0) context.fillRect(edge(index - 0.5), area.y, 1, area.h);
  });
}

// Taller marks for worse states, so that the ribbon can be read without its colours too.
const ribbonHeights = { found: 0.45, held: 0.7, lost: 1 };

function drawRibbon() {
  const canvas = byId("ribbon");
  const box = canvas.getBoundingClientRect();
  canvas.width = Math.round(box.width * devicePixelRatio);
  canvas.height = Math.round(box.height * devicePixelRatio);
  const context = canvas.getContext("2d");
  context.scale(devicePixelRatio, devicePixelRatio);
  const [from, to] = visibleRange();
  const width = box.width - axisWidthPx - rightGapPx;
  const place = (x) => axisWidthPx + ((x - from) / (to - from)) * width;
  const step = width / (to - from);
  for (const state of stateNames) {
    context.fillStyle = colour(state);
    report.frames.forEach((frame, index) => {
      if (frame.state !== state || index < from - 0.5 || index > to + 0.5) return;
      const height = box.height * ribbonHeights[state];
      const left = Math.max(axisWidthPx, place(index - 0.5));
      const right = Math.min(axisWidthPx + width, place(index + 0.5));
      context.fillRect(left, box.height - height, Math.max(1, right - left - (step > 4 ? 1 : 0)), height);
    });
  }
  if (document.activeElement !== canvas) return;
  context.fillStyle = colour("ink");
  context.fillRect(place(cursorIndex) - 1, 0, 2, box.height);
}

function ribbonFrame(event) {
  const box = byId("ribbon").getBoundingClientRect();
  const [from, to] = visibleRange();
  return frameAt(from + ((event.clientX - box.left - axisWidthPx) / (box.width - axisWidthPx - rightGapPx)) * (to - from));
}

let isSynchronising = false;
function onDraw(drawn, isInitial) {
  if (isInitial || isSynchronising) return;
  isSynchronising = true;
  for (const chart of charts) {
    if (chart !== drawn) chart.updateOptions({ dateWindow: drawn.xAxisRange() });
  }
  drawRibbon();
  isSynchronising = false;
}

function chartColours() {
  return { colors: [colour("accent"), colour("held"), colour("lost")], axisLineColor: colour("line"), gridLineColor: colour("line") };
}

function makeChart(row, isLast, place) {
  const plot = element("div", "plot");
  place.append(element("div", isLast ? "chart last" : "chart", null, element("div", "title", row.title), plot));
  const only = (frame, isHeld) => ((frame.state === "held") === isHeld ? row.value(frame) : null);
  const data = report.frames.map((frame, index) => [index, only(frame, false), only(frame, true), ...(row.limit ? [row.limit(frame)] : [])]);
  return new Dygraph(plot, data, {
    ...chartColours(),
    labels: ["frame", "found", "held", ...(row.limit ? ["limit"] : [])],
    dateWindow: visibleRange(),
    rightGap: rightGapPx,
    includeZero: Boolean(row.fromZero),
    strokeWidth: 1.5,
    drawGapEdgePoints: true,
    drawPoints: report.frames.length <= 200,
    pointSize: 1.8,
    highlightCircleSize: 4,
    series: { held: { drawPoints: true, pointSize: 2.5 }, ...(row.limit ? { limit: { drawPoints: false, strokePattern: [6, 4] } } : {}) },
    axes: {
      x: { drawAxis: isLast, axisLabelFormatter: (x) => (Number.isInteger(x) ? String(numberOf(x)) : ""), pixelsPerLabel: 60 },
      y: { axisLabelWidth: axisWidthPx - 4, pixelsPerLabel: 30, axisLabelFormatter: (y) => plain(y) },
    },
    underlayCallback: drawUnderlay,
    drawCallback: onDraw,
    highlightCallback: (event, x) => showReadout(frameAt(x)),
    clickCallback: (event, x) => openFrame(frameAt(x)),
  });
}

// Adds the rows that have anything to show.
function addCharts(rows, place) {
  const shown = rows.filter((row) => report.frames.some((frame) => row.value(frame) !== null));
  shown.forEach((row, index) => charts.push(makeChart(row, index === shown.length - 1, place)));
}

// The frame under the keyboard's cursor.
let cursorIndex = 0;
function moveCursor(index) {
  cursorIndex = frameAt(index);
  byId("ribbon").setAttribute("aria-valuenow", numberOf(cursorIndex));
  byId("ribbon").setAttribute("aria-valuetext", `frame ${numberOf(cursorIndex)}, ${report.frames[cursorIndex].state}`);
  showReadout(cursorIndex);
  drawRibbon();
}

const cursorSteps = { ArrowLeft: -1, ArrowRight: 1, PageUp: -10, PageDown: 10, Home: -Infinity, End: Infinity };
function onRibbonKey(event) {
  if (event.key === "Enter") openFrame(cursorIndex);
  else if (event.key in cursorSteps) moveCursor(cursorIndex + cursorSteps[event.key]);
  else return;
  event.preventDefault();
}

function showTimeline() {
  addCharts([...baseRows, ...measureRows], byId("charts"));
  byId("tests").addEventListener("toggle", () => addCharts(report.tests.map(testChart), byId("test-charts")), { once: true });
  const ribbon = byId("ribbon");
  ribbon.setAttribute("aria-valuemin", numberOf(0));
  ribbon.setAttribute("aria-valuemax", numberOf(lastIndex()));
  moveCursor(0);
  byId("readout").textContent = "";
  ribbon.addEventListener("keydown", onRibbonKey);
  ribbon.addEventListener("click", (event) => openFrame(ribbonFrame(event)));
  ribbon.addEventListener("mousemove", (event) => showReadout(ribbonFrame(event)));
  window.addEventListener("resize", drawRibbon);
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
    charts.forEach((chart) => chart.updateOptions(chartColours()));
    drawRibbon();
  });
}
