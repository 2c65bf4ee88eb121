/* The live preview's side of the page. The page shell is loaded once; the
   editor then sends the body as top-level blocks, each followed by a block
   mark (an HTML comment). After the first, whole body, an update names how
   many blocks stayed the same at the start and at the end and carries only
   the blocks between: those alone are replaced and get code colouring,
   diagrams and math, so the reader keeps their place and a long document
   updates quickly. Injected into every preview page before its own scripts
   run. */
(function () {
    if (window.orvoPreview) { return; }
    var MARK = "orvo-block:";
    var marks = null; /* the mark closing each block in the body, or null when they cannot be trusted */

    function wrap() { return document.getElementById("markdown-body-wrap"); }
    /* The block marks under `root` by number: mark k closes block k.
       Markup that swallows marks (an unclosed attribute, a stray comment)
       leaves holes; the blocks around a hole can only be replaced whole. */
    function marksIn(root, count) {
        var out = new Array(count), it = document.createNodeIterator(root, NodeFilter.SHOW_COMMENT), n;
        while ((n = it.nextNode())) {
            if (n.data.lastIndexOf(MARK, 0) === 0) {
                var k = parseInt(n.data.slice(MARK.length), 10);
                if (k >= 0 && k < count) { out[k] = n; }
            }
        }
        return out;
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
        /* Puts the whole body in: `html` holds `count` blocks. Answers the
           number of blocks. */
        replaceAll: function (html, count) {
            var w = wrap();
            if (!w) { return -1; }
            w.innerHTML = html;
            marks = marksIn(w, count);
            decorate(w);
            return count;
        },
        /* Keeps `head` blocks at the start and `tail` at the end of the
           `oldCount` shown, and puts the `count` blocks of `html` between.
           The blocks replaced must be siblings (an element left open by
           raw HTML holds the blocks after it, which is fine). Answers how
           many blocks were put in, or -1 when the page cannot take this
           update in part (the caller then sends the whole body). */
        updateBlocks: function (head, tail, oldCount, html, count) {
            var w = wrap();
            if (!w || marks === null || marks.length !== oldCount || head + tail > oldCount) { return -1; }
            var t = document.createElement("template");
            t.innerHTML = html;
            var fresh = marksIn(t.content, count);
            var from = head > 0 ? marks[head - 1] : null;
            var last = oldCount - tail - 1 >= head ? marks[oldCount - tail - 1] : null;
            var parent = from ? from.parentNode : w;
            if ((head > 0 && !from) || (oldCount - tail - 1 >= head && !last)) { return -1; }
            if (!parent || (parent !== w && !w.contains(parent)) || (last && last.parentNode !== parent)) { return -1; }
            if (parent !== w && parent.closest && parent.closest("pre")) { return -1; }
            var start = from ? from.nextSibling : parent.firstChild;
            var before = last ? last.nextSibling : start;
            if (last) {
                for (var n = start; n;) {
                    var next = n.nextSibling;
                    parent.removeChild(n);
                    if (n === last) { break; }
                    n = next;
                }
            }
            var added = Array.prototype.slice.call(t.content.childNodes);
            parent.insertBefore(t.content, before);
            marks = marks.slice(0, head).concat(fresh, marks.slice(oldCount - tail));
            for (var d = 0; d < added.length; d++) {
                if (added[d].nodeType === 1) { decorate(added[d]); }
            }
            return count;
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
        /* The body as shown, without the block marks. */
        bodyHTML: function () { var w = wrap(); return w ? w.innerHTML.replace(/<!--orvo-block:\d+-->/g, "") : ""; }
    };
})();
