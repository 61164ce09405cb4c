// What the plot shows of the results: lines between points with the observations on them, and views, each of which says
// where a point lies on the paper.

// One line for each pair of points with observations between them; of a comparison, which has none of its own, with
// observations in some epoch.
function collectLines(data) {
  if (data.comparison) return data.comparison.sights.map(([a, b]) => ({ a, b, observations: [] }));
  const lines = new Map();
  for (const o of data.observations)
    for (const [a, b] of o.ends) {
      if (a < 0 || b < 0 || a === b) continue;
      const key = Math.min(a, b) * 4294967296 + Math.max(a, b);
      const line = lines.get(key);
      if (line) line.observations.push(o);
      else lines.set(key, { a, b, observations: [o] });
    }
  return [...lines.values()];
}

// A view with the axes of the coordinates on the paper, to the right and upwards, these so many times as large.
function planeView(title, right, up, raised = 1) {
  const plane = PLANES.findIndex(([i, j]) => (i === right && j === up) || (i === up && j === right));
  return {
    title, right, up, plane, ground: true, axes: [AXES[right], raised === 1 ? AXES[up] : `${AXES[up]} × ${raised}`],
    place: (p) => [p.x[right], isNumber(p.x[up]) ? raised * p.x[up] : null],
    vector: (d) => [d[right] || 0, d[up] || 0],
    // Direction on the paper of a bearing counted from the first axis of the plane to the second.
    direction: (bearing) => (PLANES[plane][0] === right ? [Math.cos(bearing), Math.sin(bearing)] : [Math.sin(bearing), Math.cos(bearing)]),
  };
}

// Levelling: places by the lines alone, or heights upwards.
function levelViews(points, lines) {
  const [u, v] = layout(points.length, lines.map((l) => [l.a, l.b]));
  const heights = points.map((p) => p.x[2]).filter(isNumber);
  const range = heights.reduce((most, z) => Math.max(most, z), -Infinity) - heights.reduce((least, z) => Math.min(least, z), Infinity);
  const wide = u.reduce((most, x) => Math.max(most, x), -Infinity) - u.reduce((least, x) => Math.min(least, x), Infinity);
  const across = wide > 0 && range > 0 ? (1.6 * range) / wide : 1; // the diagram of heights is wider than high
  return [
    { title: "diagram", plane: -1, ground: false, place: (p) => [u[p.index], v[p.index]], vector: () => [0, 0] },
    { title: "heights", plane: -1, ground: true, upOnly: true, axes: ["", "z"], place: (p) => [u[p.index] * across, p.x[2]],
      vector: (d) => [0, d[2] || 0], bar: 2 },
  ];
}

function makeViews(data, lines, yUp, raised) {
  const [right, up] = yUp ? [0, 1] : [1, 0];
  if (data.dimension === 1) return levelViews(data.points, lines);
  const plan = planeView("plan", right, up);
  return data.dimension === 2 ? [plan] : [plan, planeView("elevation along x", 0, 2, raised), planeView("elevation along y", 1, 2, raised)];
}

// Instruments turn from x to y clockwise, so x is drawn upwards; networks without them have x to the right.
function startsWithYUp(data) { return !data.comparison && !data.kindNames.some((k) => ["direction", "azimuth", "bearing", "angle"].includes(k)); }
