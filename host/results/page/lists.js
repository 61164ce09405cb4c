// The tables of the page: which rows, which columns.

function lengthColumn(title, data, key, about) {
  return { title, unit: data.format.length.name, text: (p) => data.format.metric(key(p)), key, about };
}

function smallColumn(title, data, key, about) {
  return { title, unit: data.format.length.small, text: (p) => data.format.small(key(p)), key, about };
}

const plain = (title, text, more = {}) => ({ title, left: true, text, ...more });

function pointColumns(data) {
  const columns = [
    { title: "point", left: true, text: (p) => p.name, names: ["name"] },
    { title: "role", left: true, text: (p) => p.role + (p.station ? ", instrument" : "") },
  ];
  for (const k of data.axes) columns.push(lengthColumn(AXES[k], data, (p) => p.x[k], data.comparison ? `${AXES[k]} in the first epoch` : `adjusted ${AXES[k]}`));
  if (data.has.shift) for (const k of data.axes) columns.push(smallColumn(`d${AXES[k]}`, data, (p) => p.shift[k], `adjusted less approximate ${AXES[k]}`));
  if (data.has.deviation) for (const k of data.axes) columns.push(smallColumn(`s${AXES[k]}`, data, (p) => p.deviation[k], `standard deviation of ${AXES[k]}`));
  if (data.points.some((p) => p.ellipse[0])) {
    columns.push(smallColumn("a", data, (p) => p.ellipse[0] && p.ellipse[0].a, `larger semi-axis of the ${data.asked || "standard"} ellipse in x and y`));
    columns.push(smallColumn("b", data, (p) => p.ellipse[0] && p.ellipse[0].b, `smaller semi-axis of the ${data.asked || "standard"} ellipse in x and y`));
    columns.push({ title: "bearing", unit: data.format.angle.name, about: "bearing of the larger axis, from x towards y",
      text: (p) => (p.ellipse[0] ? data.format.bearing(p.ellipse[0].bearing) : ""), key: (p) => p.ellipse[0] && p.ellipse[0].bearing });
  }
  return columns;
}

function observationColumns(data) {
  const f = data.format, suspicious = (o) => Boolean(o.marks & SUSPICIOUS);
  const number = (title, key, decimals, about, names) => ({ title, names, about, text: (o) => decimal(key(o), decimals), key: (o) => (isNumber(key(o)) ? Math.abs(key(o)) : null) });
  const columns = [
    { title: "kind", left: true, text: (o) => o.kind + (o.component ? ` ${o.component}` : "") },
    ...(data.has.at ? [plain("at", (o) => o.at)] : []),
    { title: "from", left: true, text: (o) => o.from },
    { title: "to", left: true, text: (o) => o.to },
    { title: "observed", text: (o) => f.value(o, o.value), key: (o) => o.value },
    { title: "adjusted", text: (o) => f.value(o, o.adjusted), key: (o) => o.adjusted },
    { title: "unit", left: true, text: (o) => f.valueUnit(o) },
    { title: "residual", names: ["v"], about: "observed less adjusted, in the unit to the right", text: (o) => f.smallValue(o, isNumber(o.v) ? f.sign(o) * o.v : null), key: (o) => (isNumber(o.v) ? Math.abs(o.v) : null) },
    { title: "sigma", about: "standard deviation of the observation, in the unit to the right", text: (o) => f.smallValue(o, o.sigma), key: (o) => o.sigma },
    { title: "in", left: true, text: (o) => f.smallUnit(o) },
  ];
  if (data.has.r) columns.push({ ...number("r", (o) => o.r, 3, "redundancy: 0 unchecked, 1 wholly checked", ["redundancy"]), key: (o) => o.r });
  if (data.has.w) columns.push({ ...number("w", (o) => (isNumber(o.w) ? f.sign(o) * o.w : null), 2, "normalised residual", ["normalised"]), strong: suspicious });
  else if (data.has.ratio) columns.push(number("v/sigma", (o) => (isNumber(o.ratio) ? f.sign(o) * o.ratio : null), 2, "residual by standard deviation of the observation"));
  if (data.has.detectable) {
    columns.push({ ...number("p", (o) => o.p, 4, "probability of a residual of this size or larger where nothing is wrong"), screen: true });
    columns.push({ title: "detectable", about: "bias that the test finds with the power asked for, in the unit of the residual", text: (o) => f.smallValue(o, o.detectable), key: (o) => o.detectable });
    columns.push({ ...number("bias/noise", (o) => o.noise, 1, "what that bias does to the unknowns, beside their standard deviations"), screen: true });
    columns.push({ title: "moves", screen: true, unit: f.length.small, about: "largest shift of the observation's own points by that bias", text: (o) => (isNumber(o.pointShift) ? f.small(o.pointShift) : ""), key: (o) => o.pointShift });
  }
  if (data.observations.some((o) => o.tested)) columns.push({ title: "test", left: true, about: "suspicious: the test rejects it; not checked: others do not control it", text: (o) => (suspicious(o) ? "suspicious" : o.unchecked ? "not checked" : ""), strong: suspicious });
  for (const [key, title] of [["setup", "set-up"], ["set", "set"], ["id", "id"]]) if (data.has[key]) columns.push(plain(title, (o) => o[key]));
  if (data.has.remark) columns.push(plain("remark", (o) => o.remark, { width: 30 }));
  columns.push({ title: "place", left: true, width: 34, text: (o) => (o.line > 0 ? `${o.file.replace(/^.*\//, "")}:${o.line}` : ""), key: (o) => o.file.length * 1e8 + o.line });
  return columns;
}

function constantRows(data) {
  const rows = [], f = data.format;
  for (const g of data.groups)
    for (const c of g.constants) {
      const metres = c.name === "additive constant", ppm = c.name === "scale";
      rows.push({ of: `group ${g.name}`, name: ppm ? "scale - 1" : c.name,
        value: metres ? f.small(c.value) : ppm ? decimal((c.value - 1) * 1e6, 2) : decimal(c.value, 4),
        deviation: !isNumber(c.deviation) ? "" : metres ? f.small(c.deviation) : ppm ? decimal(c.deviation * 1e6, 2) : decimal(c.deviation, 4),
        unit: metres ? f.length.small : ppm ? "ppm" : "" });
    }
  const shown = (x, name) => (!isNumber(x) ? "" : /^(c|x0|y0)$/.test(name) ? decimal(x, 4) : x.toExponential(5));
  for (const camera of data.cameras)
    for (const c of camera.constants) rows.push({ of: `camera ${camera.name}`, name: c.name, value: shown(c.value, c.name), deviation: shown(c.deviation, c.name), unit: "as in the file" });
  return rows;
}

function movementRows(data) {
  const f = data.format, rows = [];
  for (const l of data.lumps) {
    const who = { lump: String(l.lump), epochs: `${l.reference} to ${l.epoch}` };
    const add = (name, x, s, text, unit) => rows.push({ ...who, name, unit, value: text(x), deviation: isNumber(s) ? text(s) : "", ratio: isNumber(s) && s > 0 ? Math.abs(x) / s : null });
    AXES.forEach((axis, k) => add(`shift ${axis}`, l.translation[k], l.translation_deviation[k], (x) => f.small(x), f.length.small));
    AXES.forEach((axis, k) => add(`turn ${axis}`, l.rotation[k], l.rotation_deviation[k], (x) => f.smallAngle(x), f.angle.small));
    add("scale - 1", l.scale - 1, l.scale_deviation, (x) => decimal(x * 1e6, 2), "ppm");
  }
  return rows;
}

function rotationRows(data) {
  const f = data.format, rows = [];
  for (const o of data.orientations)
    [0, 1, 2].forEach((k) => {
      if (k < 2 && o.rotation[k] === 0 && !isNumber(o.deviation[k])) return;
      rows.push({ station: [o.station, o.setup, o.set].filter(Boolean).join(" / "), name: `rx${k + 1}`, value: k < 2 ? f.signedAngle(o.rotation[k]) : f.circle(o.rotation[k]), deviation: isNumber(o.deviation[k]) ? f.smallAngle(o.deviation[k]) : "" });
    });
  return rows;
}

function leftOutRows(data) {
  return data.accounts.flatMap((a) => a.left_out.map((l) => ({ kind: a.kind, ...l })));
}

// The closures before the adjustment, each with its kind and unit.
function closureRows(data) {
  return data.closures.flatMap((c) => c.worst.map((w) => ({ ...w, kind: c.kind, angle: c.unit === "rad" })));
}

function closureColumns(data) {
  const f = data.format, small = (c, x) => (c.angle ? f.smallAngle(x) : f.small(x)), ratio = (c) => Math.abs(c.misclosure) / c.limit;
  return [
    plain("kind", (c) => c.kind),
    { title: "misclosure", text: (c) => small(c, c.misclosure), key: (c) => Math.abs(c.misclosure) },
    { title: "limit", about: "3 standard deviations by the sigmas of the observations", text: (c) => small(c, c.limit), key: (c) => c.limit },
    plain("in", (c) => (c.angle ? f.angle.small : f.length.small)),
    { title: "ratio", about: "misclosure by its limit", text: (c) => decimal(ratio(c), 2), key: ratio, strong: (c) => ratio(c) > 1 },
    { title: "length", unit: f.length.name, text: (c) => (isNumber(c.length) ? f.metric(c.length) : ""), key: (c) => c.length },
    plain("at", (c) => c.at || ""),
    plain("points", (c) => c.points.join(" - "), { width: 40 }),
    plain("place", (c) => c.rows.map((r) => `${r.file.replace(/^.*\//, "")}:${r.line}`).join(" "), { width: 40 }),
  ];
}

function passed(value) { return value === true ? "passed" : value === false ? "failed" : ""; }

function kindColumns() {
  return [
    plain("kind", (k) => k.kind), { title: "sigma a priori", text: (k) => decimal(k.sigma_a_priori, 4) },
    { title: "sigma a posteriori", text: (k) => decimal(k.sigma_a_posteriori, 4) }, plain("goodness of fit", (k) => passed(k.passed)),
    { title: "beyond *", text: (k) => String(k.over[0]), about: "beyond the limit for one residual" },
    { title: "beyond **", text: (k) => String(k.over[1]), about: "beyond the limit for the largest of all" },
    { title: "suspicious", text: (k) => String(k.suspicious), about: "rejected by the test" },
    { title: "not checked", text: (k) => String(k.unchecked), about: "others do not control them" },
  ];
}

// What was found of the suspicious observations that were looked at closely.
function suspectRows(data) {
  return data.suspects.map((s) => ({ ...s, o: data.observations[s.observation] }));
}

function suspectColumns(data) {
  const f = data.format;
  return [
    plain("observation", (s) => s.o.name, { width: 40 }),
    { title: "read", text: (s) => f.value(s.o, isNumber(s.o.raw) ? s.o.raw : s.o.value) },
    { title: "would have to read", text: (s) => f.value(s.o, s.would_read) },
    { title: "unit", left: true, text: (s) => f.valueUnit(s.o) },
    { title: "off by", text: (s) => f.smallValue(s.o, f.sign(s.o) * s.error) },
    { title: "in", left: true, text: (s) => f.smallUnit(s.o) },
    plain("moves most", (s) => s.point),
    { title: "by", unit: f.length.small, text: (s) => f.small(s.shift), key: (s) => s.shift },
    plain("not told apart from", (s) => s.alike.map((a) => `${data.observations[a.observation].name} (${decimal(a.correlation, 3)})`).join("; "), { width: 60 }),
  ];
}

function derivedColumns(data) {
  const f = data.format, as = (d) => ({ kind: d.kind === "angle" ? "angle" : d.kind, unit: d.unit });
  return [
    plain("kind", (d) => d.kind), plain("at", (d) => d.at), plain("from", (d) => d.from), plain("to", (d) => d.to),
    { title: "value", text: (d) => f.value(as(d), d.value) }, { title: "unit", left: true, text: (d) => f.valueUnit(as(d)) },
    { title: "standard deviation", text: (d) => (isNumber(d.deviation) ? f.smallValue(as(d), d.deviation) : "") },
    { title: "in", left: true, text: (d) => f.smallUnit(as(d)) },
  ];
}

// Baselines and observed points, whose components are tested together too; the line of each component is among the
// observations.
function jointRows(data) {
  return (data.joint_tests || []).map((t) => ({ ...t, o: data.observations[t.observation] }));
}

function jointColumns() {
  return [
    plain("kind", (t) => t.o.kind), plain("from", (t) => t.o.from), plain("to", (t) => t.o.to),
    { title: "components", text: (t) => String(t.components), key: (t) => t.components },
    { title: "rank", about: "of the cofactors of their residuals", text: (t) => String(t.rank), key: (t) => t.rank },
    { title: "squares", about: "of the residuals, by their cofactors", text: (t) => decimal(t.squares, 2), key: (t) => t.squares },
    { title: "p", about: "probability of squares of this size or larger where nothing is wrong", text: (t) => decimal(t.p, 4), key: (t) => t.p },
    { title: "test", left: true, text: (t) => (t.rejected ? "suspicious" : ""), strong: (t) => t.rejected },
    plain("place", (t) => (t.o.line > 0 ? `${t.o.file.replace(/^.*\//, "")}:${t.o.line}` : ""), { width: 34 }),
  ];
}

function varianceColumns() {
  return [
    plain("of", (c) => c.name, { width: 40 }),
    { title: "rows", text: (c) => String(c.rows), key: (c) => c.rows },
    { title: "redundancy", text: (c) => decimal(c.redundancy, 2), key: (c) => c.redundancy },
    { title: "factor", about: "by which the standard deviations would be multiplied", text: (c) => (isNumber(c.factor) ? decimal(c.factor, 3) : ""), key: (c) => c.factor },
    { title: "standard deviation", about: "of the factor", text: (c) => (isNumber(c.deviation) ? decimal(c.deviation, 3) : ""), key: (c) => c.deviation },
    plain("used", (c) => (c.used ? "yes" : "")),
  ];
}

// Every table that has rows.
function makeTables(data, choosePoint, chooseObservation) {
  const f = data.format, tables = [];
  const number = (title, key, unit) => ({ title, unit, text: key, key: (row) => (key(row) === "" ? null : Number(key(row))) });
  const add = (name, columns, rows, choose) => { if (rows.length) tables.push(new Table(name, columns, rows, choose)); };
  if (data.comparison) addComparisonTables(data, add, choosePoint);
  add("Points", pointColumns(data), data.points, choosePoint);
  add("Observations", observationColumns(data), data.observations, chooseObservation);
  add("Suspicious", observationColumns(data), data.suspicious, chooseObservation);
  add("Suspects", suspectColumns(data), suspectRows(data), (s) => chooseObservation(s.o));
  add("Tested together", jointColumns(), jointRows(data), (t) => chooseObservation(t.o));
  add("Variance components", varianceColumns(), data.variance_components || []);
  add("Derived", derivedColumns(data), data.derived);
  add("Left out", [plain("kind", (l) => l.kind), plain("at", (l) => l.at), plain("from", (l) => l.from), plain("to", (l) => l.to), plain("reason", (l) => l.reason, { width: 70 }), plain("place", (l) => `${l.file}:${l.line}`, { width: 40 })], leftOutRows(data));
  add("Closures", closureColumns(data), closureRows(data));
  add("Kinds", kindColumns(), data.kinds);
  add("Rotations", [plain("station", (o) => o.station), plain("angle", (o) => o.name), { ...number("value", (o) => o.value, f.angle.name), key: null }, number("standard deviation", (o) => o.deviation, f.angle.small)], rotationRows(data));
  add("Constants", [plain("of", (c) => c.of), plain("constant", (c) => c.name), number("value", (c) => c.value), number("standard deviation", (c) => c.deviation), plain("unit", (c) => c.unit)], constantRows(data));
  add("Movements", [plain("lump", (m) => m.lump), plain("epochs", (m) => m.epochs), plain("parameter", (m) => m.name), number("value", (m) => m.value), number("standard deviation", (m) => m.deviation), plain("unit", (m) => m.unit),
    { title: "ratio", about: "value by its standard deviation", text: (m) => decimal(m.ratio, 1), key: (m) => m.ratio, strong: (m) => m.ratio > 3 }], movementRows(data));
  add("Pairs", [plain("from", (p) => p.from), plain("to", (p) => p.to), ...data.axes.map((k) => smallColumn(`sd${AXES[k]}`, data, (p) => p.deviation[k], `standard deviation of the difference in ${AXES[k]}`)),
    smallColumn("a", data, (p) => p.ellipse[0] && p.ellipse[0].a), smallColumn("b", data, (p) => p.ellipse[0] && p.ellipse[0].b)], data.pairs);
  return tables;
}
