// What is known of the chosen point, line or observation, and the legend above it.

const LISTED = 200; // observations beside a point

function table(head, rows, more = {}) {
  return element("table", more, element("thead", {}, element("tr", {}, ...head.map((h) => element("th", { scope: "col" }, h)))),
    element("tbody", {}, ...rows));
}

const row = (cells, more = {}) => element("tr", more, ...cells.map((c) => element("td", {}, c)));

function observationTable(data, observations, choose) {
  const worth = data.has.w ? ["w", (o) => decimal(isNumber(o.w) ? data.format.sign(o) * o.w : null, 2)] : ["v/sigma", (o) => decimal(isNumber(o.ratio) ? data.format.sign(o) * o.ratio : null, 2)];
  const rows = observations.slice(0, LISTED).map((o) => row(
    [`${o.kind}${o.component ? ` ${o.component}` : ""}`, [o.from, o.at, o.to].filter(Boolean).join(" – "), o.v === null ? "" : `${data.format.smallValue(o, data.format.sign(o) * o.v)} ${data.format.smallUnit(o)}`, worth[1](o)],
    { class: o.marks & SUSPICIOUS ? "mark" : null, click: () => choose(o), tabindex: 0, keydown: (e) => { if (e.key === "Enter") choose(o); } }));
  const rest = observations.length - rows.length;
  return element("div", { class: "pickable" }, table(["observation", "", "residual", worth[0]], rows), rest > 0 ? element("p", { class: "place" }, `and ${rest} more`) : null);
}

// How far a point of a comparison moved until each epoch, beside the standard deviation and the test.
function comparedPointDetails(data, p) {
  const f = data.format, rows = p.moves.flatMap((m) => data.axes.map((k, i) => row(
    [i === 0 ? String(m.epoch) : "", AXES[k], f.small(m.by[k]), f.small(m.deviation[k]), i === 0 && m.test ? `${decimal(m.test.value / m.test.limit, 2)}` : ""], { class: m.test && !m.test.passed ? "mark" : null })));
  return [
    element("h3", {}, `${p.name} `, element("small", { class: "place" }, p.role)),
    table(["", f.length.name], data.axes.map((k) => row([AXES[k], f.metric(p.x[k])]))),
    table(["epoch", "", `shift ${f.length.small}`, `s ${f.length.small}`, "test by limit"], rows),
  ];
}

function pointDetails(data, p, choose) {
  if (data.comparison) return comparedPointDetails(data, p);
  const f = data.format;
  const rows = data.axes.map((k) => row([AXES[k], p.code[k].replace("_", " "), f.metric(p.x[k]), f.small(p.shift[k]), f.small(p.deviation[k])]));
  const ellipses = PLANES.map(([i, j], plane) => [`${AXES[i]}${AXES[j]}`, p.ellipse[plane]]).filter(([, e]) => e)
    .map(([name, e]) => row([name, f.small(e.a), f.small(e.b), f.bearing(e.bearing)]));
  const moves = p.moves.map((m) => row([String(m.epoch), ...m.by.map((x) => f.small(x))]));
  const observations = data.observationsOf(p.index).sort((a, b) => Math.abs(b.w || b.ratio || 0) - Math.abs(a.w || a.ratio || 0));
  return [
    element("h3", {}, `${p.name} `, element("small", { class: "place" }, p.role + (p.station ? ", instrument" : ""))),
    table(["", "code", f.length.name, `shift ${f.length.small}`, `s ${f.length.small}`], rows),
    ellipses.length ? table(["ellipse", `a ${f.length.small}`, `b ${f.length.small}`, `bearing ${f.angle.name}`], ellipses) : null,
    moves.length ? table(["epoch", ...AXES.map((a) => `${a} ${f.length.small}`)], moves) : null,
    element("h3", {}, `${observations.length} observation${observations.length === 1 ? "" : "s"}`),
    observations.length ? observationTable(data, observations, choose) : null,
  ];
}

// The largest residuals, where nothing is chosen.
function worstDetails(data, choose) {
  const size = (o) => Math.abs(isNumber(o.w) ? o.w : o.ratio || 0);
  const worst = data.observations.filter((o) => isNumber(o.w) || isNumber(o.ratio)).sort((p, q) => size(q) - size(p)).slice(0, 12);
  if (!worst.length) return [];
  return [element("h3", {}, data.has.w ? "Largest normalised residuals" : "Largest residuals by sigma"), observationTable(data, worst, choose)];
}

function lineDetails(data, line, choose) {
  const a = data.points[line.a].name, b = data.points[line.b].name;
  return [element("h3", {}, `${a} – ${b}`), observationTable(data, line.observations, choose)];
}

function sourceLine(o) {
  if (o.line <= 0) return [];
  return [element("p", { class: "place" }, `${o.file}, line ${o.line}`), o.text ? element("pre", { class: "line", id: "source" }, o.text) : null];
}

function observationDetails(data, o) {
  const f = data.format, unit = f.valueUnit(o), small = f.smallUnit(o), sign = f.sign(o);
  const pairs = [
    ["read", f.value(o, o.raw), unit], ["observed", f.value(o, o.value), unit], ["adjusted", f.value(o, o.adjusted), unit],
    ["residual", f.smallValue(o, isNumber(o.v) ? sign * o.v : null), small], ["standard deviation", f.smallValue(o, o.sigma), small],
    ["of the residual", f.smallValue(o, o.deviation), small], ["redundancy", decimal(o.r, 3), ""],
    ["normalised residual", decimal(isNumber(o.w) ? sign * o.w : null, 2), ""],
    ["p", decimal(o.p, 4), ""], ["detectable bias", f.smallValue(o, o.detectable), small],
    ["bias to noise", decimal(o.noise, 1), ""], ["which moves its points by", isNumber(o.pointShift) ? f.small(o.pointShift) : "", f.length.small],
    ["checked", o.unchecked ? "not by others" : "", ""],
    ["residual by sigma", data.has.w ? "" : decimal(isNumber(o.ratio) ? sign * o.ratio : null, 2), ""],
    ["set-up", o.setup, ""], ["set", o.set, ""], ["id", o.id, ""], ["remark", o.remark, ""],
  ].filter(([, value]) => value !== "");
  const beyond = o.marks & ~((o.marks & 4 ? 2 : 0) | (o.marks & 16 ? 8 : 0)); // the limit for one is told by that for all
  const marks = MARKS.filter(([bit]) => beyond & bit).map(([, words]) => element("p", { class: "mark" }, words));
  return [
    element("h3", {}, o.name),
    ...sourceLine(o),
    element("table", {}, element("tbody", {}, ...pairs.map((p) => row(p)))),
    ...marks,
  ];
}

// Legend

function swatch(act) {
  const svg = drawn("svg", { width: 34, height: 16, viewBox: "0 0 34 16", "aria-hidden": "true" });
  svg.append(...act());
  return svg;
}

function pointSwatch(role, station) {
  const fill = FILLED.includes(role) ? "var(--point)" : "var(--paper)";
  const more = { fill, stroke: "var(--point)", "stroke-width": 1.4 };
  const shape = role.endsWith("fixed") ? drawn("path", { d: "M17 2.6 22 11.4H12Z", ...more }) : role === "weighted" ? drawn("rect", { x: 13, y: 4, width: 8, height: 8, ...more }) : drawn("circle", { cx: 17, cy: 8, r: 3.6, ...more });
  return swatch(() => (station ? [drawn("circle", { cx: 17, cy: 8, r: 7, fill: "none", stroke: "var(--point)" }), shape] : [shape]));
}

function showLegend(plot) {
  const { data, classes } = plot, items = [];
  const add = (image, words) => items.push(element("li", {}, image, words));
  const line = (colour, width, dash) => swatch(() => [drawn("line", { x1: 2, x2: 32, y1: 8, y2: 8, stroke: colour, "stroke-width": width, "stroke-dasharray": dash || "none", "stroke-linecap": "round" })]);
  classes.words.forEach((words, c) => { if (plot.byClass[c].length) add(line(`var(--class${c})`, WIDTHS[c] * 1.3), `${words} (${plot.byClass[c].length})`); });
  if (plot.byClass[4].length) add(line("var(--none)", 1.3, "3 4"), data.comparison ? "observed" : `no value (${plot.byClass[4].length})`);
  for (const role of ROLES) if (data.points.some((p) => p.role === role)) add(pointSwatch(role, false), role);
  if (data.points.some((p) => p.station)) add(pointSwatch("none", true), "instrument");
  if (plot.shown.ellipses && plot.view.plane >= 0) add(swatch(() => [drawn("ellipse", { cx: 17, cy: 8, rx: 12, ry: 5.5, fill: "none", stroke: "var(--ellipse)", "stroke-width": 1.4 })]), data.asked ? `${data.asked} ellipse` : plot.confidence > 1 ? "95 % ellipse" : "standard ellipse");
  const arrow = (colour, dash) => swatch(() => [drawn("path", { d: "M3 8H31M25 4 31 8 25 12", fill: "none", stroke: colour, "stroke-width": dash ? 1.1 : 1.8, "stroke-dasharray": dash || "none" })]);
  if (plot.shown.shifts) add(arrow("var(--shift)"), "shift");
  if (plot.shown.moves && !data.comparison) add(arrow("var(--epoch)"), "movement to other epochs");
  if (plot.shown.moves && data.comparison) {
    const moved = data.comparison.control ? "difference" : "shift";
    add(arrow("var(--epoch)"), `${moved} beyond its limit`);
    add(arrow("var(--soft)", "3 3"), `${moved} within its limit`);
    if (plot.view.plane === 0) add(swatch(() => [drawn("ellipse", { cx: 17, cy: 8, rx: 12, ry: 5.5, fill: "none", stroke: "var(--epoch)", "stroke-width": 1.1 })]), `confidence ellipse of a ${moved}, ${decimal(100 * (1 - data.comparison.level), 1)} %`);
  }
  byId("legend").replaceChildren(element("h3", {}, data.comparison ? (data.comparison.control ? "Free network less control points" : "Epochs over one another") : `Lines by ${MEASURES[plot.measure].title}`), element("ul", { class: "legend" }, ...items));
}
