// Numbers as people read them: the units of the network file, residuals and precision in a small unit beside them.
// The data hold metres and radians; the lists are in the order of the units that a file may be written in.

const LENGTHS = [
  { name: "m", small: "mm", factor: 1e-3, decimals: 4, smallDecimals: 2 },
  { name: "mm", small: "µm", factor: 1e-6, decimals: 3, smallDecimals: 1 },
  { name: "inch", small: "mil", factor: 2.54e-5, decimals: 5, smallDecimals: 2 },
  { name: "cm", small: "mm", factor: 1e-3, decimals: 3, smallDecimals: 2 },
  { name: "km", small: "mm", factor: 1e-3, decimals: 7, smallDecimals: 2 },
  { name: "ft", small: "ft", factor: 0.3048, decimals: 4, smallDecimals: 5 },
  { name: "us ft", small: "us ft", factor: 1200 / 3937, decimals: 4, smallDecimals: 5 },
];
const ANGLES = [
  { name: "gon", small: "mgon", circle: 400, factor: Math.PI / 200e3, decimals: 5, smallDecimals: 2 },
  { name: "°", small: "″", circle: 360, factor: Math.PI / 648000, decimals: 6, smallDecimals: 2 },
  { name: "°′″", small: "″", circle: 360, factor: Math.PI / 648000, decimals: 2, smallDecimals: 2, sexagesimal: true },
  { name: "rad", small: "µrad", circle: 2 * Math.PI, factor: 1e-6, decimals: 8, smallDecimals: 2 },
  { name: "mgon", small: "mgon", circle: 400e3, factor: Math.PI / 200e3, decimals: 2, smallDecimals: 2 },
  { name: "″", small: "″", circle: 1296000, factor: Math.PI / 648000, decimals: 2, smallDecimals: 2 },
  { name: "mil", small: "0.001 mil", circle: 6400, factor: Math.PI / 3200e3, decimals: 4, smallDecimals: 2 },
  { name: "°′″", small: "″", circle: 360, factor: Math.PI / 648000, decimals: 2, smallDecimals: 2, sexagesimal: true },
];
const TURN = 2 * Math.PI;

const isNumber = (x) => typeof x === "number" && Number.isFinite(x);

// A zero has no sign.
function decimal(x, decimals) {
  if (!isNumber(x)) return "";
  const text = x.toFixed(decimals);
  return Number(text) === 0 && text[0] === "-" ? text.slice(1) : text;
}

function sexagesimal(degrees, decimals) {
  const unit = 10 ** decimals;
  const total = Math.round(Math.abs(degrees) * 3600 * unit);
  const two = (n) => String(n).padStart(2, "0");
  const seconds = ((total / unit) % 60).toFixed(decimals).padStart(decimals + 3, "0");
  const minutes = Math.floor(total / unit / 60);
  return `${degrees < 0 && total > 0 ? "-" : ""}${Math.floor(minutes / 60)}°${two(minutes % 60)}′${seconds}″`;
}

class Units {
  constructor(file) {
    this.metres = file.metres;
    this.length = LENGTHS[file.length];
    this.angle = ANGLES[file.angle];
    this.zenith = file.zenith;
  }

  metric(x) { return decimal(x / this.metres, this.length.decimals); }
  small(x) { return decimal(x / this.length.factor, this.length.smallDecimals); }
  smallAngle(x) { return decimal(x / this.angle.factor, this.angle.smallDecimals); }

  signedAngle(x) {
    if (!isNumber(x)) return "";
    const value = (x / TURN) * this.angle.circle;
    return this.angle.sexagesimal ? sexagesimal(value, this.angle.decimals) : decimal(value, this.angle.decimals);
  }

  circle(x) { return isNumber(x) ? this.signedAngle(x - TURN * Math.floor(x / TURN)) : ""; }
  bearing(x) { return isNumber(x) ? decimal((x / TURN) * this.angle.circle, 1) : ""; }
  elevation(x) { return this.signedAngle(this.zenith ? Math.PI / 2 - x : x); }

  // A residual of an elevation is the opposite one of a zenith angle.
  sign(o) { return o.kind === "vertical angle" && this.zenith ? -1 : 1; }

  valueUnit(o) { return o.unit === "m" ? this.length.name : o.unit === "rad" ? this.angle.name : o.unit === "1" ? "" : o.unit; }
  smallUnit(o) { return o.unit === "m" ? this.length.small : o.unit === "rad" ? this.angle.small : o.unit === "1" ? "" : o.unit; }

  // The value of an observation, in its unit.
  value(o, x) {
    if (!isNumber(x)) return "";
    if (o.unit === "m") return this.metric(x);
    if (o.unit !== "rad") return decimal(x, o.unit === "pixel" ? 3 : 8);
    if (o.kind === "vertical angle") return this.elevation(x);
    return o.kind === "weighted rotation" ? this.signedAngle(x) : this.circle(x);
  }

  // A residual or standard deviation of an observation, in the small unit.
  smallValue(o, x) {
    if (!isNumber(x)) return "";
    if (o.unit === "m") return this.small(x);
    return o.unit === "rad" ? this.smallAngle(x) : decimal(x, o.unit === "pixel" ? 3 : 8);
  }
}

// Text for a length on the ground or of an ellipse, rounded to 1, 2 or 5 times a power of ten.
function roundLength(metres) {
  const power = 10 ** Math.floor(Math.log10(metres));
  const digit = metres / power;
  return (digit >= 5 ? 5 : digit >= 2 ? 2 : 1) * power;
}

function lengthText(metres) {
  if (metres >= 1000) return `${Number((metres / 1000).toPrecision(3))} km`;
  if (metres >= 1) return `${Number(metres.toPrecision(3))} m`;
  return metres >= 1e-3 ? `${Number((metres * 1e3).toPrecision(3))} mm` : `${Number((metres * 1e6).toPrecision(3))} µm`;
}
