/* The live preview's side of the page. The page shell is loaded once; the
   editor then hands each new body to orvoPreview.update(), which replaces
   only the top-level blocks that changed and runs code colouring, diagrams
   and math on those alone, so the reader keeps their place and a long
   document updates quickly. Injected into every preview page before its
   own scripts run. */
(function () {
    if (window.orvoPreview) { return; }
    var keys = null; /* the source HTML of each top-level node of the body */

    function wrap() { return document.getElementById("markdown-body-wrap"); }
    function keyOf(node) {
        if (node.nodeType === 1) { return node.outerHTML; }
        if (node.nodeType === 3) { return "#" + node.data; }
        return "";
    }
    function decorate(root) {
        if (window.orvoChartDraw) { try { window.orvoChartDraw(root); } catch (e) { } }
        if (!root.parentNode && root !== wrap()) { return; } /* a chart took its place */
        if (window.Prism && Prism.highlightAllUnder) { try { Prism.highlightAllUnder(root); } catch (e) { } }
        if (window.MathJax && MathJax.Hub && MathJax.Hub.Queue) { MathJax.Hub.Queue(["Typeset", MathJax.Hub, root]); }
    }
    function headings() { var w = wrap(); return w ? w.querySelectorAll("h1,h2,h3,h4,h5,h6") : []; }
    function topOf(el) { return el.getBoundingClientRect().top + window.scrollY; }
    function maxScroll() { return Math.max(0, document.documentElement.scrollHeight - window.innerHeight); }

    /* Links to the program itself: the web engine would hand these to the
       desktop as unknown protocols, so the click is reported to the view
       (as a console message it watches for) and goes no further. */
    document.addEventListener("click", function (e) {
        var a = e.target && e.target.closest ? e.target.closest("a[href]") : null;
        if (!a) { return; }
        var p = a.protocol;
        if (p === "orvolib:" || p === "orvoapp:" || p === "orvo:") {
            e.preventDefault();
            console.info("orvo-application-link:" + a.href);
        }
    }, true);

    window.orvoPreview = {
        /* Puts `html` in the body; answers how many top-level nodes were replaced. */
        update: function (html) {
            var w = wrap();
            if (!w) { return -1; }
            var t = document.createElement("template");
            t.innerHTML = html;
            var fresh = Array.prototype.slice.call(t.content.childNodes);
            var freshKeys = fresh.map(keyOf);
            if (keys === null || keys.length !== w.childNodes.length) {
                while (w.firstChild) { w.removeChild(w.firstChild); }
                for (var i = 0; i < fresh.length; i++) { w.appendChild(fresh[i]); }
                keys = freshKeys;
                decorate(w);
                return fresh.length;
            }
            var old = keys.length, n = freshKeys.length, p = 0, s = 0;
            while (p < old && p < n && keys[p] === freshKeys[p]) { p++; }
            while (s < old - p && s < n - p && keys[old - 1 - s] === freshKeys[n - 1 - s]) { s++; }
            var before = w.childNodes[old - s] || null;
            for (var r = old - s - 1; r >= p; r--) { w.removeChild(w.childNodes[r]); }
            var added = fresh.slice(p, n - s);
            for (var a = 0; a < added.length; a++) { w.insertBefore(added[a], before); }
            keys = freshKeys;
            for (var d = 0; d < added.length; d++) {
                if (added[d].nodeType === 1) { decorate(added[d]); }
            }
            if (w.childNodes.length !== keys.length) { keys = null; } /* someone else moved nodes */
            return added.length;
        },
        /* Scrolls to section `index` (-1: before the first heading), `fraction`
           of the way into it; by `documentFraction` of the whole when the
           page's headings are not the editor's `headingCount`. */
        syncTo: function (index, fraction, documentFraction, headingCount) {
            var hs = headings(), y;
            if (hs.length === 0 || hs.length !== headingCount) {
                y = documentFraction * maxScroll();
            } else {
                var top = index < 0 ? 0 : topOf(hs[index]);
                var bottom = index + 1 < hs.length ? topOf(hs[index + 1]) : maxScroll() + window.innerHeight;
                y = top + fraction * (bottom - top);
            }
            window.scrollTo(0, Math.max(0, Math.min(maxScroll(), y)));
            return window.scrollY;
        },
        scrollPosition: function () { return window.scrollY; },
        restoreScroll: function (y) { window.scrollTo(0, y); },
        bodyHTML: function () { var w = wrap(); return w ? w.innerHTML : ""; }
    };
})();
