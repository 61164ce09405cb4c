// Epochs of a comparison: its figures, and the tables of shifts, velocities, epochs and points that were left out.

const probability = (p) => (p < 0.0001 ? "<0.0001" : decimal(p, 4));
const fisher = (t) => (t ? `${decimal(t.value, 2)}, limit ${decimal(t.limit, 2)}, p ${probability(t.p)}` : "");

function comparisonFigures(data) {
  const c = data.comparison, all = [["points", String(data.points.length)], ["coordinates", String(c.coordinates)], ["open motions", String(c.open)]];
  all.push(["level of each test", `${Number((100 * c.level).toPrecision(3))} %`]);
  all.push([c.a_priori ? "sigma, a priori" : c.control ? "sigma of the free network" : "sigma of all epochs", decimal(c.sigma, 3)]);
  if (c.variances) all.push(["are the epochs equally precise", fisher(c.variances), c.variances.passed ? "good" : "bad"]);
  all.push([c.control ? "do all control points fit" : "did all points keep their places", fisher(c.congruence), c.congruence.passed ? "good" : "bad"]);
  if (c.left_out.length) all.push(["the other points", fisher(c.stable), c.stable.passed ? "good" : "bad"]);
  if (c.elsewhere.length) all.push(["not compared", c.elsewhere.join(", "), "wide"]);
  return all;
}

// The numbers of a test, of rows that have one.
function testColumns(testOf, title = "test") {
  const number = (name, key, text, about) => ({ title: name, about, text: (row) => (testOf(row) ? text(key(testOf(row))) : ""), key: (row) => (testOf(row) ? key(testOf(row)) : null) });
  const two = (x) => decimal(x, 2);
  return [
    { ...number(title, (t) => t.value, two, "mean square by the variance factor: Fisher's distribution where nothing moved"), strong: (row) => testOf(row) && !testOf(row).passed },
    number("limit", (t) => t.limit, two, "which the test exceeds by chance at its level"),
    number("p", (t) => t.p, probability, "probability of such a value or a larger one by chance"),
  ];
}

function shiftRows(data) {
  return data.points.flatMap((p) => p.moves.map((m) => ({ ...m, p })));
}

function shiftColumns(data) {
  const f = data.format, ellipses = data.points.some((p) => p.moves.some((m) => m.ellipse));
  const columns = [plain("point", (m) => m.p.name), plain("", (m) => m.p.role)];
  if (!data.comparison.control) columns.push({ title: "epoch", text: (m) => String(m.epoch), key: (m) => m.epoch });
  for (const k of data.axes) columns.push(smallColumn(`d${AXES[k]}`, data, (m) => m.by[k], data.comparison.control ? `${AXES[k]} of the free network less that of the control point` : `shift in ${AXES[k]} since the first epoch, against the stable points`));
  for (const k of data.axes) columns.push(smallColumn(`s${AXES[k]}`, data, (m) => m.deviation[k], `standard deviation of d${AXES[k]}`));
  if (ellipses) {
    columns.push(smallColumn("a", data, (m) => m.ellipse && m.ellipse.a, "larger semi-axis of the confidence ellipse"));
    columns.push(smallColumn("b", data, (m) => m.ellipse && m.ellipse.b, "smaller semi-axis of the confidence ellipse"));
    columns.push({ title: "bearing", unit: f.angle.name, about: "of the larger axis, from x towards y", text: (m) => (m.ellipse ? f.bearing(m.ellipse.bearing) : ""), key: (m) => m.ellipse && m.ellipse.bearing });
  }
  return [...columns, ...testColumns((m) => m.test), plain("beyond", (m) => (m.test && !m.test.passed ? "*" : ""))];
}

function velocityColumns(data) {
  const unit = `${data.format.length.small}/year`, yearly = (title, key) => ({ ...smallColumn(title, data, key), unit });
  return [
    plain("point", (v) => data.points[v.point].name),
    ...data.axes.map((k) => yearly(`v${AXES[k]}`, (v) => v.by[k])), ...data.axes.map((k) => yearly(`s${AXES[k]}`, (v) => v.deviation[k])),
    ...testColumns((v) => v.moving, "moving"), ...testColumns((v) => v.steady, "steady"),
  ];
}

// Strain of each group until each epoch, in millionths.
function strainRows(c) {
  return c.strains.flatMap((g) => g.epochs.map((s, i) => ({ ...s, points: g.points.join(", "), epoch: i + 2 })));
}

function strainColumns(data) {
  const rows = strainRows(data.comparison), names = [...new Set(rows.flatMap((s) => s.values.map((v) => v.name)))];
  const of = (s, name) => s.values.find((v) => v.name === name), ppm = (x) => decimal(1e6 * x, 2), p = (t) => (t ? t.p : null);
  const test = (title, key, about) => ({ title, about, text: (s) => (s[key] ? probability(s[key].p) : ""), key: (s) => p(s[key]), strong: (s) => s[key] && !s[key].passed });
  return [
    plain("group", (s) => s.points, { width: 40 }), { title: "epoch", text: (s) => String(s.epoch), key: (s) => s.epoch },
    ...names.map((name) => ({ title: name, unit: "ppm", about: "with its standard deviation", text: (s) => (of(s, name) ? `${ppm(of(s, name).value)} ± ${ppm(of(s, name).deviation)}` : ""), key: (s) => (of(s, name) ? of(s, name).value : null) })),
    ...(data.dimension === 2 ? [{ title: "bearing 1", unit: data.format.angle.name, about: "of extension 1, from x towards y", text: (s) => (isNumber(s.bearing) ? data.format.bearing(s.bearing) : ""), key: (s) => s.bearing }] : []),
    test("p shape", "strained", "of the test that the group kept its shape"), test("p alike", "homogeneous", "of the test that it was strained alike everywhere"),
    plain("", (s) => s.words.join("; "), { width: 60 }),
  ];
}

function epochColumns() {
  return [
    { title: "epoch", text: (e) => String(e.number), key: (e) => e.number }, plain("file", (e) => e.file, { width: 40 }), plain("title", (e) => e.title, { width: 40 }), plain("date", (e) => e.date),
    { title: "degrees of freedom", text: (e) => String(e.degrees_of_freedom), key: (e) => e.degrees_of_freedom },
    { title: "sigma", text: (e) => (e.degrees_of_freedom > 0 ? decimal(Math.sqrt(e.squares / e.degrees_of_freedom), 4) : "") },
    plain("datum", (e) => e.datum, { width: 70 }),
  ];
}

function addComparisonTables(data, add, choosePoint) {
  const c = data.comparison;
  add(c.control ? "Differences" : "Shifts", shiftColumns(data), shiftRows(data), (m) => choosePoint(m.p));
  add("Velocities", velocityColumns(data), c.velocities, (v) => choosePoint(data.points[v.point]));
  add(c.control ? "Do not fit" : "Moved", [{ title: "step", text: (d) => String(d.step), key: (d) => d.step }, plain("point left out", (d) => d.point), ...testColumns((d) => d.test, "test with it")], c.left_out.map((d, i) => ({ ...d, step: i + 1 })), (d) => choosePoint(data.points[data.byName.get(d.point)]));
  add("Strain", strainColumns(data), strainRows(c));
  if (!c.control) add("Epochs", epochColumns(), c.epochs.map((e, i) => ({ ...e, number: i + 1 })));
}

// The points that are farthest beyond their limits, where nothing is chosen.
function shiftDetails(data, choosePoint) {
  const size = (m) => (m.test ? m.test.value / m.test.limit : 0), length = (m) => Math.hypot(...m.by.map((x) => x || 0));
  const worst = shiftRows(data).filter((m) => size(m) > 1).sort((a, b) => size(b) - size(a)).slice(0, 12);
  if (!worst.length) return [];
  const control = data.comparison.control, epoch = (m) => (control ? [] : [String(m.epoch)]);
  const rows = worst.map((m) => row([m.p.name, ...epoch(m), `${data.format.small(length(m))} ${data.format.length.small}`, decimal(size(m), 2)], { click: () => choosePoint(m.p), tabindex: 0, keydown: (e) => { if (e.key === "Enter") choosePoint(m.p); } }));
  return [element("h3", {}, `${control ? "Differences" : "Shifts"} beyond their limits`), element("div", { class: "pickable" }, table(["point", ...(control ? ["difference"] : ["epoch", "shift"]), "test by limit"], rows))];
}
