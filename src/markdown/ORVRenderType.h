#pragma once

// What a Markdown render is for. The value picks the parser extensions, the
// renderer flags and the slot overrides (see MarkdownWrap).
enum ORVRenderType : int {
    ORVRenderTypePlain = 0,     // preview, site build, ordinary calls
    ORVRenderTypeEvernote = 1,  // note services: inline-styled math and images, padded
    ORVRenderTypePDF = 2,       // heading and footnote ids unique across documents of one page
    ORVRenderTypeLaTeXTag = 3,  // math written as a "$latex ... $" shortcode
    ORVRenderTypeTableOnly = 4, // only tables are recognised (the table builder)
    ORVRenderTypeEPub = 5,      // task boxes stay text
    ORVRenderTypeFigure = 6,    // images always become figures
    ORVRenderTypeMathImage = 7, // math becomes a remote image, output padded
};
