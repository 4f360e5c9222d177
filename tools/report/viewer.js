// One frame enlarged: picture, reason, and every test with its margin.
"use strict";

let openIndex = null;
let shownFrames = []; // what the arrow keys walk through: the pictures that the filter shows

function gauge(test) {
  const bar = element("i");
  bar.style.width = `${50 * Math.abs(marginOf(test).share)}%`;
  return element("div", "gauge", null, bar);
}

function marginWords(test) {
  const { amount } = marginOf(test);
  const words = test.passed ? `${withUnit(amount, test.unit)} to spare` : `${withUnit(-amount, test.unit)} short`;
  const setting = [...report.parameters, ...report.tracker].find((parameter) => parameter.name === test.parameter);
  return words + (test.parameter ? ` · ${setting ? settingName(setting) : test.parameter}` : "");
}

function pieceName(pieces, index) {
  return pieces[index]?.name ?? `piece ${index + 1}`;
}

// Name, measured value and limit; below, how far apart the two are: to the right of the middle it passed.
function testRow(test, pieces) {
  const hasNumbers = test.measured !== null && test.limit !== null;
  const subject = test.piece === undefined ? test.name : `${test.name}, ${pieceName(pieces, test.piece)}`;
  const words = hasNumbers
    ? `${withUnit(test.measured, test.unit)}${test.passed ? "" : ", needs"} ${limitSigns[test.kind]} ${withUnit(test.limit, test.unit)}`
    : test.passed ? "yes" : "no";
  return element("div", test.passed ? "test" : "test failed", null,
    element("div", "words", null, element("span", "", `${test.passed ? "✓" : "✗"} ${subject}`), element("span", "", words)),
    hasNumbers ? element("div", "margin", null, gauge(test), element("small", "", marginWords(test))) : null);
}

// The tests in their order, under the name of the way that they belong to.
function testRows(tests, pieces) {
  const rows = [];
  tests.forEach((test, index) => {
    const isNewWay = test.way !== undefined && (index === 0 || tests[index - 1].way !== test.way);
    if (isNewWay) rows.push(element("h4", "", test.way));
    rows.push(testRow(test, pieces));
  });
  return rows;
}

function factList(facts) {
  const list = element("dl", "facts");
  for (const [name, value] of facts) list.append(element("dt", "", name), element("dd", "", value));
  return list;
}

function stripeFacts(attempt) {
  const columns = attempt.columns;
  const facts = [
    ["columns", `${columns.scanned} scanned, ${columns.withCentre} with centre, ${columns.withoutEdge} without edge, ` +
      `${columns.withoutPair} without pair`],
  ];
  if (attempt.widthPx.max > 0) {
    const { modal, min, max } = attempt.widthPx;
    facts.push(["width", `${plain(modal)} px in most columns, ${plain(min)} to ${plain(max)} px kept`]);
  }
  for (const filter of attempt.filters) facts.push([filter.name, `${filter.before} → ${filter.after} points`]);
  for (const line of attempt.lines) {
    facts.push([line.name, line.isValid
      ? `${plain((Math.atan(line.slope) * 180) / Math.PI)}°, ${plain(100 * line.inlierShare)} % of the points; ` +
        `${plain(line.allowedDeg[0])}° to ${plain(line.allowedDeg[1])}° allowed`
      : "no line"]);
  }
  return facts;
}

// Elements and points of a groove.
function grooveFacts(attempt) {
  const named = attempt.pieces.filter((piece) => piece.name);
  if (named.length === 0) return [];
  const elements = named.map((piece) => [piece.name, (piece.radiusPx
    ? `radius ${plain(piece.radiusPx)} px`
    : `${plain((Math.atan(piece.slope) * 180) / Math.PI)}°`) +
    `, x ${piece.start[0]} to ${piece.end[0]}, roughness ${plain(piece.meanDistPx)} px`]);
  const points = attempt.features.map(({ name, pos, sigmaPx }) =>
    [name, `x ${number(pos[0], 1)}, y ${number(pos[1], 1)} px, ± ${number(sigmaPx, 2)}`]);
  return [element("h4", "", "groove"), factList([...elements, ...points])];
}

function attemptFacts(attempt, position, isDecisive) {
  const title = `${position + 1}. ${inWords(attempt.path)} search, ${inWords(attempt.extraction)}: ${attempt.reason}`;
  const parts = [element("h3", "", title + (isDecisive ? "" : " (not decisive)"))];
  if (attempt.sentence && !isDecisive) parts.push(element("p", "quiet", attempt.sentence));
  parts.push(...testRows(attempt.checks, attempt.pieces), ...grooveFacts(attempt), element("h4", "", "stripe"), factList(stripeFacts(attempt)));
  return parts;
}

function stageFacts(stages) {
  if (stages.length === 0) return [];
  const longest = Math.max(...stages.map((stage) => stage.us));
  const rows = stages.map((stage) => {
    const bar = element("div", "bar");
    bar.style.width = `${longest > 0 ? (100 * stage.us) / longest : 0}%`;
    return element("div", "stage", null, element("span", "", stage.name), bar,
      element("span", "number", `${number(stage.us, 0)} µs`));
  });
  return [element("h3", "", "Time"), ...rows];
}

function showFacts(frame, detail) {
  const facts = byId("viewer-facts");
  facts.className = frame.state;
  const place = frame.x === null ? "none" : `x ${number(frame.x, 2)}, y ${number(frame.y, 2)} px`;
  facts.replaceChildren(
    element("p", "sentence", frame.sentence || (frame.reason === "found" ? "seam found" : frame.reason)),
    ...(frame.advice ? [element("p", "advice", frame.advice)] : []),
    factList([["seam", place], ["stripe", `${frame.points} points`], ["time", `${number(frame.ms, 2)} ms`]]));
  if (!detail) return;
  const { attempts, decisive, gate, stages } = detail.trace;
  const refused = gate.find((test) => !test.passed) || (decisive >= 0 && attempts[decisive].checks[attempts[decisive].decisive]);
  if (refused) facts.append(testRow(refused, decisive >= 0 ? attempts[decisive].pieces : []));
  const order = attempts.map((_, index) => index).sort((a, b) => (b === decisive) - (a === decisive) || a - b);
  for (const index of order) facts.append(...attemptFacts(attempts[index], index, index === decisive));
  if (gate.length > 0) facts.append(element("h3", "", "Gate of the tracker"), ...testRows(gate, []));
  facts.append(...stageFacts(stages));
  facts.scrollTop = 0;
}

function openFrame(index) {
  openIndex = index;
  const frame = report.frames[index];
  const detail = report.details[index];
  byId("viewer-state").className = `badge ${frame.state}`;
  byId("viewer-state").textContent = frame.state;
  byId("viewer-frame").textContent = `Frame ${numberOf(index)}`;
  history.replaceState(null, "", `#frame=${numberOf(index)}`);
  byId("viewer-file").textContent = frame.file;
  byId("viewer-image").hidden = !detail;
  byId("viewer-no-image").hidden = Boolean(detail);
  if (detail) byId("viewer-image").src = detail.picture;
  showFacts(frame, detail);
  byId("viewer-before").disabled = neighbour(-1) === null;
  byId("viewer-after").disabled = neighbour(1) === null;
  if (!byId("viewer").open) byId("viewer").showModal();
}

// The frame that an address of the page names, "#frame=812".
function openLinkedFrame(address) {
  const index = Number(/#frame=([0-9]+)$/.exec(address)?.[1] ?? NaN) - report.firstFrame;
  if (report.frames[index]) openFrame(index);
}

// The nearest shown frame before (-1) or after (1) the open one.
function neighbour(way) {
  const onThatSide = shownFrames.filter((index) => (index - openIndex) * way > 0);
  if (onThatSide.length === 0) return null;
  return way > 0 ? onThatSide[0] : onThatSide[onThatSide.length - 1];
}

function step(way) {
  const next = neighbour(way);
  if (next !== null) openFrame(next);
}

function showKey() {
  for (const { name, colour } of report.key) {
    const mark = element("span", "mark");
    mark.style.setProperty("--state", colour);
    byId("viewer-key").append(mark, ` ${name}`);
  }
}

function wireViewer() {
  const viewer = byId("viewer");
  showKey();
  // Closing is told late: by then the address may name another frame, which may be open.
  window.addEventListener("hashchange", (event) => openLinkedFrame(event.newURL));
  viewer.addEventListener("close", () => {
    if (!viewer.open) history.replaceState(null, "", location.pathname + location.search);
  });
  byId("viewer-before").addEventListener("click", () => step(-1));
  byId("viewer-after").addEventListener("click", () => step(1));
  byId("viewer-close").addEventListener("click", () => viewer.close());
  byId("viewer-image").addEventListener("click", (event) => event.target.parentElement.classList.toggle("full"));
  viewer.addEventListener("click", (event) => {
    if (event.target === viewer) viewer.close();
  });
  viewer.addEventListener("keydown", (event) => {
    if (event.key === "ArrowLeft") step(-1);
    else if (event.key === "ArrowRight") step(1);
    else return;
    event.preventDefault();
  });
}
