// Ribbon and charts over the frames, all with the same zoom.
"use strict";

const axisWidthPx = 62; // left of every plot, so that ribbon and charts line up
const rightGapPx = 8;
const charts = [];
const chartRows = [
  { title: "seam x, px", value: (frame) => frame.x, decimals: 1 },
  { title: "seam y, px", value: (frame) => frame.y, decimals: 1 },
  { title: "stripe points", value: (frame) => frame.points, fromZero: true },
  { title: "time, ms", value: (frame) => frame.ms, fromZero: true },
];

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
    `frame ${index} · ${frame.state}${place} · ${frame.points} points · ${number(frame.ms, 2)} ms${reason}`;
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
  return { colors: [colour("accent"), colour("held")], axisLineColor: colour("line"), gridLineColor: colour("line") };
}

function makeChart(row, isLast) {
  const plot = element("div", "plot");
  byId("charts").append(element("div", isLast ? "chart last" : "chart", null, element("div", "title", row.title), plot));
  const only = (frame, isHeld) => ((frame.state === "held") === isHeld ? row.value(frame) : null);
  const data = report.frames.map((frame, index) => [index, only(frame, false), only(frame, true)]);
  return new Dygraph(plot, data, {
    ...chartColours(),
    labels: ["frame", "found", "held"],
    dateWindow: [-0.5, lastIndex() + 0.5],
    rightGap: rightGapPx,
    includeZero: Boolean(row.fromZero),
    strokeWidth: 1.5,
    drawGapEdgePoints: true,
    drawPoints: report.frames.length <= 200,
    pointSize: 1.8,
    highlightCircleSize: 4,
    series: { held: { drawPoints: true, pointSize: 2.5 } },
    axes: {
      x: { drawAxis: isLast, axisLabelFormatter: (x) => (Number.isInteger(x) ? String(x) : ""), pixelsPerLabel: 60 },
      y: { axisLabelWidth: axisWidthPx - 4, pixelsPerLabel: 30, axisLabelFormatter: (y) => plain(y) },
    },
    underlayCallback: drawUnderlay,
    drawCallback: onDraw,
    highlightCallback: (event, x) => showReadout(frameAt(x)),
    clickCallback: (event, x) => openFrame(frameAt(x)),
  });
}

function showTimeline() {
  const rows = chartRows.filter((row) => report.frames.some((frame) => row.value(frame) !== null));
  rows.forEach((row, index) => charts.push(makeChart(row, index === rows.length - 1)));
  drawRibbon();
  const ribbon = byId("ribbon");
  ribbon.addEventListener("click", (event) => openFrame(ribbonFrame(event)));
  ribbon.addEventListener("mousemove", (event) => showReadout(ribbonFrame(event)));
  window.addEventListener("resize", drawRibbon);
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => {
    charts.forEach((chart) => chart.updateOptions(chartColours()));
    drawRibbon();
  });
}
