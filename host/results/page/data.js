// The results as objects. They lie in the page as one list a column; a missing column, or null in one, is a value that
// the run did not make.

const AXES = ["x", "y", "z"];
const PLANES = [[0, 1], [0, 2], [1, 2]];
const ROLES = ["fixed", "partly fixed", "weighted", "free", "free, not in the datum", "stable", "fits", "compared", "moved", "does not fit"];
const FILLED = ["fixed", "free", "stable", "fits", "compared"];
const MARKS = [
  [1, "outside the histogram (5 standard deviations)"],
  [2, "beyond the limit for one residual"],
  [4, "beyond the limit for the largest of all"],
  [8, "beyond the tau limit for one residual"],
  [16, "beyond the tau limit for the largest of all"],
  [32, "suspicious: the test rejects it"],
];
const SUSPICIOUS = 32;

const at = (column, i) => (column ? column[i] : null);

function roleOf(codes) {
  const present = codes.filter((c) => c);
  if (present.length && present.every((c) => c === "fixed")) return "fixed";
  if (present.includes("fixed")) return "partly fixed";
  if (present.includes("weighted")) return "weighted";
  return present.includes("no_datum") ? "free, not in the datum" : "free";
}

function readPoints(t) {
  return t.name.map((name, i) => {
    const code = [0, 1, 2].map((k) => at(t.code[k], i) || "");
    const ellipse = [0, 1, 2].map((k) => {
      const e = t.ellipse[k];
      return e && isNumber(e.a[i]) ? { a: e.a[i], b: e.b[i], bearing: e.bearing[i] } : null;
    });
    const start = [0, 1, 2].map((k) => at(t.approximate[k], i));
    const adjusted = [0, 1, 2].map((k) => at(t.adjusted[k], i));
    return {
      index: i, name, station: Boolean(t.station[i]), code, role: at(t.role, i) || roleOf(code), start, adjusted, ellipse,
      x: adjusted.map((x, k) => (isNumber(x) ? x : start[k])),
      shift: adjusted.map((x, k) => (isNumber(x) && isNumber(start[k]) && code[k] !== "fixed" ? x - start[k] : null)),
      deviation: [0, 1, 2].map((k) => at(t.deviation[k], i)),
      moves: at(t.moves, i) || [],
    };
  });
}

// Observed less residual; an adjusted direction is given from 0 to a full circle where it is shown.
function readObservations(t, places) {
  return t.kind.map((kind, i) => {
    const o = {
      index: i, kind: t.kinds[kind], from: t.names[t.from[i]], to: t.names[t.to[i]], file: t.files[t.file[i]], line: t.line[i],
      component: t.components[t.component[i]], unit: t.units[t.unit[i]], value: at(t.value, i), raw: at(t.raw, i), sigma: t.sigma[i],
      v: at(t.residual, i), deviation: at(t.deviation, i), r: at(t.redundancy, i), marks: at(t.marks, i) || 0,
      tested: isNumber(at(t.marks, i)), text: at(t.text, i), id: at(t.id, i) || "",
      remark: at(t.remark, i) || "", setup: at(t.setup, i) || "", set: at(t.set, i) || "", at: at(t.at, i) || "", w: null,
    };
    o.adjusted = isNumber(o.value) && isNumber(o.v) ? o.value - o.v : null;
    o.ratio = isNumber(o.v) && o.sigma > 0 ? o.v / o.sigma : null;
    o.w = at(t.normalised, i);
    o.p = at(t.p, i);
    o.detectable = at(t.detectable, i);
    o.noise = at(t.noise, i);
    o.pointShift = at(t.shift, i);
    o.unchecked = Boolean(at(t.unchecked, i));
    const place = (name) => (places.has(name) ? places.get(name) : -1);
    o.a = place(o.from);
    o.b = place(o.to);
    o.ends = o.at ? [[place(o.at), o.a], [place(o.at), o.b]] : [[o.a, o.b]]; // the lines on which it lies
    o.name = `${o.kind}${o.component ? ` ${o.component}` : ""} ${o.at ? `at ${o.at} from ` : ""}${o.from}${o.to ? ` to ${o.to}` : ""}`;
    return o;
  });
}

// Solvers that give the standard deviation of a residual but no quotient: the quotient.
function completeNormalised(observations) {
  if (observations.some((o) => isNumber(o.w))) return;
  for (const o of observations)
    if (isNumber(o.v) && isNumber(o.deviation) && o.deviation > 1e-3 * o.sigma) o.w = o.v / o.deviation;
}

class Data {
  constructor(raw) {
    Object.assign(this, raw);
    this.format = new Units(raw.units);
    this.points = readPoints(raw.points);
    this.byName = new Map();
    for (const p of this.points) if (!this.byName.has(p.name)) this.byName.set(p.name, p.index);
    this.observations = readObservations(raw.observations, this.byName);
    completeNormalised(this.observations);
    this.axes = [0, 1, 2].filter((k) => this.points.some((p) => p.code[k]));
    this.has = {
      w: this.observations.some((o) => isNumber(o.w)),
      ratio: this.observations.some((o) => isNumber(o.ratio)),
      r: this.observations.some((o) => isNumber(o.r)),
      detectable: this.observations.some((o) => isNumber(o.detectable)),
      id: this.observations.some((o) => o.id),
      remark: this.observations.some((o) => o.remark),
      setup: this.observations.some((o) => o.setup),
      set: this.observations.some((o) => o.set),
      at: this.observations.some((o) => o.at),
      ellipse: this.points.some((p) => p.ellipse.some((e) => e)),
      deviation: this.points.some((p) => p.deviation.some(isNumber)),
      shift: this.points.some((p) => p.shift.some(isNumber)),
      moves: this.points.some((p) => p.moves.length),
    };
    const p = raw.precision || {};
    this.asked = p.confidence ? `${Number((100 * p.confidence).toPrecision(3))} %` : ""; // confidence of the ellipses; empty: standard ones
    this.wider = p.wider || Math.sqrt(-2 * Math.log(0.05)); // ellipses of 95 % by standard ones
    this.suspicious = this.observations.filter((o) => o.marks & SUSPICIOUS)
      .sort((p, q) => Math.abs(q.w || 0) - Math.abs(p.w || 0));
    this.kindNames = [...new Set(this.observations.map((o) => o.kind))];
  }

  observationsOf(point) { return this.observations.filter((o) => o.a === point || o.b === point || o.ends[0][0] === point); }
}
