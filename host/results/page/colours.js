// What the lines show, in classes: colours that colour-blind people tell apart, and a width for each, so that colour is
// not needed. Colours are those of the style sheet for the theme in use.

const MEASURES = {
  w: { title: "normalised residual", of: (o) => o.w, size: Math.abs },
  ratio: { title: "residual by its sigma", of: (o) => o.ratio, size: Math.abs },
  r: { title: "redundancy", of: (o) => o.r, size: (x) => x },
};
const WIDTHS = [1, 1.6, 2.4, 3.8];

// Upper limits of the classes; the last class has none. Redundancy is worse when it is small.
function classesOf(measure, largest) {
  if (measure === "r") return { words: ["0.6 to 1", "0.3 to 0.6", "0.1 to 0.3", "below 0.1"], limits: [0.6, 0.3, 0.1], falling: true };
  const top = decimal(largest, 1);
  return { words: ["below 1", "1 to 2", `2 to ${top}`, `beyond ${top}`], limits: [1, 2, largest], falling: false };
}

// Class of a value: 0 (best) to 3, or -1 when there is none.
function classOf(classes, size) {
  if (!isNumber(size)) return -1;
  let c = 0;
  while (c < 3 && (classes.falling ? size < classes.limits[c] : size > classes.limits[c])) c++;
  return c;
}

function themeColours() {
  const style = getComputedStyle(document.documentElement);
  const colour = (name) => style.getPropertyValue(`--${name}`).trim();
  const all = { classes: [0, 1, 2, 3].map((c) => colour(`class${c}`)) };
  for (const name of ["paper", "ink", "soft", "grid", "line", "none", "point", "ellipse", "shift", "epoch", "pick"]) all[name] = colour(name);
  return all;
}
