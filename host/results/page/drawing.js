// The plot as SVG text: takes the calls of a canvas that the painting makes.

const xml = (text) => String(text).replace(/[&<>"]/g, (c) => ({ "&": "&amp;", "<": "&lt;", ">": "&gt;", '"': "&quot;" })[c]);

class Drawing {
  constructor(width, height, paper) {
    this.parts = [`<svg xmlns="${SVG}" width="${width}" height="${height}" viewBox="0 0 ${width} ${height}" font-family="sans-serif" font-size="12">`,
      `<rect width="${width}" height="${height}" fill="${paper}"/>`];
    Object.assign(this, { path: "", dash: [], strokeStyle: "#000", fillStyle: "#000", lineWidth: 1, globalAlpha: 1, textAlign: "left", textBaseline: "middle" });
  }

  n(x) { return Number(x.toFixed(2)); }
  beginPath() { this.path = ""; this.shape = null; }
  moveTo(x, y) { this.path += `M${this.n(x)} ${this.n(y)}`; }
  lineTo(x, y) { this.path += `L${this.n(x)} ${this.n(y)}`; }
  closePath() { this.path += "Z"; }
  rect(x, y, w, h) { this.path += `M${this.n(x)} ${this.n(y)}h${this.n(w)}v${this.n(h)}h${this.n(-w)}Z`; }
  arc(x, y, r) { this.ellipse(x, y, r, r, 0); }
  ellipse(x, y, a, b, turn) { this.shape = `<ellipse rx="${this.n(a)}" ry="${this.n(b)}" transform="translate(${this.n(x)} ${this.n(y)}) rotate(${this.n((turn * 180) / Math.PI)})"`; }
  setLineDash(dash) { this.dash = dash; }

  add(paint) {
    if (this.shape) this.parts.push(`${this.shape} ${paint}/>`);
    else if (this.path) this.parts.push(`<path d="${this.path}" ${paint}/>`);
  }

  stroke() {
    const dash = this.dash.length ? ` stroke-dasharray="${this.dash.join(" ")}"` : "";
    this.add(`fill="none" stroke="${this.strokeStyle}" stroke-width="${this.lineWidth}" stroke-linecap="round" stroke-opacity="${this.globalAlpha}"${dash}`);
  }

  fill() { this.add(`fill="${this.fillStyle}"`); }
  fillRect(x, y, w, h) { this.parts.push(`<rect x="${this.n(x)}" y="${this.n(y)}" width="${this.n(w)}" height="${this.n(h)}" fill="${this.fillStyle}"/>`); }

  write(text, x, y, paint) {
    const anchor = { left: "start", right: "end", center: "middle" }[this.textAlign];
    this.parts.push(`<text x="${this.n(x)}" y="${this.n(y + (this.textBaseline === "middle" ? 4 : -2))}" text-anchor="${anchor}" ${paint}>${xml(text)}</text>`);
  }

  strokeText(text, x, y) { this.write(text, x, y, `fill="none" stroke="${this.strokeStyle}" stroke-width="${this.lineWidth}" stroke-linejoin="round"`); }
  fillText(text, x, y) { this.write(text, x, y, `fill="${this.fillStyle}"`); }
  text() { return `${this.parts.join("\n")}\n</svg>\n`; }
}

function drawingOf(plot) {
  const drawing = new Drawing(Math.round(plot.width), Math.round(plot.height), plot.colours.paper);
  for (const step of paintScene(drawing, plot, plot.transform)) void step;
  paintFrame(drawing, plot);
  return drawing.text();
}
