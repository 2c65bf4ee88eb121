/* A small stand-in for the part of jQuery that the chart support script
   of a site uses ($(fn), $(document).ready, $(selector).each, text,
   hasClass, addClass, parent, hide, after). A page that loads jQuery
   itself keeps it: this defines $ only when nothing else did. */
(function (w) {
  if (w.jQuery || w.$) { return; }
  function Wrap(nodes) { this.nodes = nodes; this.length = nodes.length; }
  Wrap.prototype.each = function (fn) {
    for (var i = 0; i < this.nodes.length; i++) { fn.call(this.nodes[i], i, this.nodes[i]); }
    return this;
  };
  Wrap.prototype.text = function () {
    return this.nodes.map(function (n) { return n.textContent; }).join("");
  };
  Wrap.prototype.hasClass = function (c) {
    return this.nodes.some(function (n) { return n.classList && n.classList.contains(c); });
  };
  Wrap.prototype.addClass = function (c) { return this.each(function () { this.classList.add(c); }); };
  Wrap.prototype.parent = function () {
    return new Wrap(this.nodes.map(function (n) { return n.parentNode; }).filter(Boolean));
  };
  Wrap.prototype.hide = function () { return this.each(function () { this.style.display = "none"; }); };
  Wrap.prototype.after = function (html) {
    return this.each(function () { this.insertAdjacentHTML("afterend", html); });
  };
  Wrap.prototype.ready = function (fn) {
    if (document.readyState !== "loading") { fn(); } else { document.addEventListener("DOMContentLoaded", fn); }
    return this;
  };
  function $(what) {
    if (typeof what === "function") { return new Wrap([document]).ready(what); }
    if (typeof what === "string") { return new Wrap(Array.prototype.slice.call(document.querySelectorAll(what))); }
    return new Wrap(what ? [what] : []);
  }
  w.$ = w.jQuery = $;
})(window);
