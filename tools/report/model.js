// What the pages of report and sweep share: their data, and what is derived from it. Everything that comes from
// outside reaches a page through textContent or attributes, never as markup.
"use strict";

const report = JSON.parse(document.getElementById("report-data").textContent);
const stateNames = ["found", "held", "lost"];

function byId(id) {
  return document.getElementById(id);
}

// An element with a class, a text and children; null children are left out.
function element(tag, className, text, ...children) {
  const made = document.createElement(tag);
  if (className) made.className = className;
  if (text !== null && text !== undefined) made.textContent = text;
  made.append(...children.filter((child) => child !== null));
  return made;
}

function card(value, label, state) {
  return element("div", `card ${state || ""}`, null, element("b", "", value), element("span", "quiet", label));
}

// Frames go by their number among all inputs, of which a page may show a part.
function numberOf(index) {
  return index + report.firstFrame;
}

// Stretches of frames without a seam of their own, within a sequence.
function lossesOf(frames) {
  const losses = [];
  frames.forEach((frame, index) => {
    if (frame.state === "found") return;
    const last = losses[losses.length - 1];
    if (last && last.to === index - 1 && !frame.startsSequence) last.to = index;
    else losses.push({ from: index, to: index });
  });
  return losses;
}

// A colour of style.css, as it is now.
function colour(name) {
  return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
}

function number(value, decimals) {
  return value === null || value === undefined ? "–" : value.toFixed(decimals);
}

// At most four significant digits: "14.2", "0.125", "1280".
function plain(value) {
  return value === null ? "no number" : String(Number(value.toPrecision(Math.abs(value) >= 1000 ? 6 : 4)));
}

// "minGapPx (dPara8)"; settings of the tracker have one name only.
function settingName({ name, field }) {
  return field ? `${name} (${field})` : name;
}

function withUnit(value, unit) {
  return unit ? `${plain(value)} ${unit}` : plain(value);
}

// Why a frame is not found, and what may be done.
function explanation({ sentence, advice }) {
  return advice ? `${sentence}; ${advice}` : sentence;
}

// "stepTooLow" -> "step too low"
function inWords(name) {
  return name.replace(/[A-Z]/g, (letter) => " " + letter.toLowerCase());
}

// Reasons with their frames, the most frequent first; "found" last, since it needs no attention.
function reasonsByCount() {
  const entries = new Map();
  report.frames.forEach(({ reason }, index) => {
    if (!entries.has(reason)) entries.set(reason, { reason, frames: [] });
    entries.get(reason).frames.push(index);
  });
  const isGood = (entry) => Number(entry.reason === "found");
  return [...entries.values()].sort((a, b) => isGood(a) - isGood(b) || b.frames.length - a.frames.length);
}

// How far a test is from its limit: above 0 passed, below 0 failed; `share` of the larger of both values, -1..1.
function marginOf(test) {
  const isLowerLimit = test.kind === "atLeast" || test.kind === "above";
  const amount = isLowerLimit ? test.measured - test.limit : test.limit - test.measured;
  const scale = Math.max(Math.abs(test.measured), Math.abs(test.limit));
  return { amount, share: scale > 0 ? Math.max(-1, Math.min(1, amount / scale)) : 0 };
}

const limitSigns = { atLeast: "≥", above: ">", atMost: "≤", below: "<" };
