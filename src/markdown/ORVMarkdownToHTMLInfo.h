#pragma once

// What a Markdown render found in its text, so that page assembly loads only
// the scripts the page needs. All flags start false; a render only ever sets
// them, so one object may collect several renders.
class ORVMarkdownToHTMLInfo
{
public:
    bool isChartOldFlowSeq = false; // a code block in "sequence" or "flow"
    bool isChartMermaid = false;    // a code block in "mermaid"
    bool isChartPlantUML = false;   // a code block in "plantuml"
    bool isChartECharts = false;    // a code block in "echarts"
    bool isChartVIZ = false;        // a code block in dot, neato, fdp, sfdp, twopi or circo
    bool isHaveLaTeX = false;       // math left for the page's MathJax
    bool isHaveCodeBlock = false;   // any code block, fenced or indented
};
