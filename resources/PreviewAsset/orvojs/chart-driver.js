!function(){var deflate=function(){
/* Raw DEFLATE (RFC 1951) of a byte string (characters 0-255), one block
   with the fixed Huffman codes, LZ77 over a 32 KiB window. The level
   (1 to 9, 6 by default) sets how long the search for a match may go on. */
var lengthBase=[3,4,5,6,7,8,9,10,11,13,15,17,19,23,27,31,35,43,51,59,67,83,99,115,131,163,195,227,258];
var lengthExtra=[0,0,0,0,0,0,0,0,1,1,1,1,2,2,2,2,3,3,3,3,4,4,4,4,5,5,5,5,0];
var distBase=[1,2,3,4,5,7,9,13,17,25,33,49,65,97,129,193,257,385,513,769,1025,1537,2049,3073,4097,6145,8193,12289,16385,24577];
var distExtra=[0,0,0,0,1,1,2,2,3,3,4,4,5,5,6,6,7,7,8,8,9,9,10,10,11,11,12,12,13,13];
var chainLimits=[0,4,8,16,32,64,128,256,1024,4096];
var WINDOW=32768,MIN_MATCH=3,MAX_MATCH=258,HASH_SIZE=1<<15;
function Writer(){this.out=[];this.bits=0;this.count=0;}
Writer.prototype.put=function(value,n){ /* n bits of value, least significant first */
  this.bits|=value<<this.count;this.count+=n;
  while(this.count>=8){this.out.push(String.fromCharCode(this.bits&255));this.bits>>>=8;this.count-=8;}
};
Writer.prototype.code=function(code,n){ /* a Huffman code goes most significant bit first */
  var r=0;for(var i=0;i<n;i++){r=(r<<1)|(code&1);code>>>=1;}this.put(r,n);
};
Writer.prototype.finish=function(){if(this.count>0){this.out.push(String.fromCharCode(this.bits&255));}this.bits=0;this.count=0;return this.out.join("");};
function literal(w,v){
  if(v<144){w.code(0x30+v,8);}else if(v<256){w.code(0x190+v-144,9);}
  else if(v<280){w.code(v-256,7);}else{w.code(0xC0+v-280,8);}
}
function findIndex(bases,value){var i=bases.length-1;while(bases[i]>value){i--;}return i;}
function match(w,length,distance){
  var li=findIndex(lengthBase,length);literal(w,257+li);
  if(lengthExtra[li]){w.put(length-lengthBase[li],lengthExtra[li]);}
  var di=findIndex(distBase,distance);w.code(di,5);
  if(distExtra[di]){w.put(distance-distBase[di],distExtra[di]);}
}
return function(data,level){
  level=(level===undefined)?6:Math.max(1,Math.min(9,level|0));
  var maxChain=chainLimits[level];
  var n=data.length,head=new Int32Array(HASH_SIZE),prev=new Int32Array(WINDOW);
  for(var h=0;h<HASH_SIZE;h++){head[h]=-1;}
  var w=new Writer();
  w.put(1,1);w.put(1,2); /* the last block, fixed codes */
  function hashAt(p){return((data.charCodeAt(p)<<10)^(data.charCodeAt(p+1)<<5)^data.charCodeAt(p+2))&(HASH_SIZE-1);}
  function insert(p){if(p+MIN_MATCH<=n){var k=hashAt(p);prev[p&(WINDOW-1)]=head[k];head[k]=p;}}
  var pos=0;
  while(pos<n){
    var bestLen=0,bestDist=0;
    if(pos+MIN_MATCH<=n){
      var cand=head[hashAt(pos)],chain=maxChain,limit=Math.min(MAX_MATCH,n-pos);
      while(cand>=0&&pos-cand<=WINDOW&&chain-->0){
        var len=0;
        while(len<limit&&data.charCodeAt(cand+len)===data.charCodeAt(pos+len)){len++;}
        if(len>bestLen){bestLen=len;bestDist=pos-cand;if(len===limit){break;}}
        var next=prev[cand&(WINDOW-1)];
        if(next>=cand){break;}
        cand=next;
      }
    }
    if(bestLen>=MIN_MATCH){
      match(w,bestLen,bestDist);
      for(var i=0;i<bestLen;i++){insert(pos+i);}
      pos+=bestLen;
    }else{
      literal(w,data.charCodeAt(pos)&255);insert(pos);pos++;
    }
  }
  literal(w,256);
  return w.finish();
};
}();
/* PlantUML's text encoding: groups of three bytes (zero padded) as four
   6-bit values over 0-9 A-Z a-z - _. */
function encode6bit(b){
  if(b<10){return String.fromCharCode(48+b);}b-=10;
  if(b<26){return String.fromCharCode(65+b);}b-=26;
  if(b<26){return String.fromCharCode(97+b);}b-=26;
  if(b===0){return "-";}if(b===1){return "_";}return "?";
}
function encode64(data){
  var r="";
  for(var i=0;i<data.length;i+=3){
    var b1=data.charCodeAt(i)&255,b2=i+1<data.length?data.charCodeAt(i+1)&255:0,b3=i+2<data.length?data.charCodeAt(i+2)&255:0;
    r+=encode6bit(b1>>2)+encode6bit(((b1&3)<<4)|(b2>>4))+encode6bit(((b2&15)<<2)|(b3>>6))+encode6bit(b3&63);
  }
  return r;
}
function utf8Bytes(text){return unescape(encodeURIComponent(text));}
var plantumlServer="https://www.plantuml.com";
function element(id){return document.getElementById(id);}
function showError(id,e){
  var box=element(id);if(!box){return;}
  var pre=document.createElement("pre");pre.className="orvo-chart-error";
  pre.textContent=String(e&&e.message?e.message:e);box.appendChild(pre);
}
function drawPlantUML(id,text){
  var url=plantumlServer+"/plantuml/svg/"+encode64(deflate(utf8Bytes(text),9));
  var link=document.createElement("a");link.href=url;link.target="_blank";
  var img=document.createElement("img");img.src=url;img.alt="PlantUML diagram";
  link.appendChild(img);element(id).appendChild(link);
}
function drawOldSeq(id,text){Diagram.parse(text).drawSVG(id,{theme:"simple"});}
function drawOldFlow(id,text){flowchart.parse(text).drawSVG(id);}
function drawMermaid(id,text){var e=element(id);e.className="mermaid";e.innerHTML=text;}
function drawViz(engine){
  return function(id,text){
    new Viz().renderSVGElement(text,{engine:engine}).then(function(svg){element(id).appendChild(svg);})
      .catch(function(e){showError(id,e);});
  };
}
function drawECharts(id,text){
  try{
    var option;eval(text);
    option.animation=false;
    var e=element(id);
    e.style.width=option.width?(option.width+10)+"px":"100%";
    e.style.height=option.height?(option.height+10)+"px":"350px";
    echarts.init(e).setOption(option);
  }catch(err){}
}
function defined(name){return function(){return typeof window[name]!=="undefined";};}
function always(){return true;}
var table=[
  [".language-plantuml",drawPlantUML,always],
  [".language-sequence",drawOldSeq,defined("Diagram")],
  [".language-flow",drawOldFlow,defined("flowchart")],
  [".language-mermaid",drawMermaid,defined("mermaid")],
  [".language-circo",drawViz("circo"),defined("Viz")],
  [".language-dot",drawViz("dot"),defined("Viz")],
  [".language-fdp",drawViz("fdp"),defined("Viz")],
  [".language-neato",drawViz("neato"),defined("Viz")],
  [".language-osage",drawViz("osage"),defined("Viz")],
  [".language-twopi",drawViz("twopi"),defined("Viz")],
  [".language-echarts",drawECharts,defined("echarts")]
];
var counter=0;
function drawAll(root){
  root=root||document;
  for(var t=0;t<table.length;t++){
    var row=table[t];
    if(!row[2]()){continue;}
    var codes=root.querySelectorAll(row[0]);
    for(var i=0;i<codes.length;i++){
      var code=codes[i],text=code.textContent,pre=code.parentNode;
      if(!pre||!pre.parentNode){continue;}
      var outer=document.createElement("div"),inner=document.createElement("div");
      inner.id="orvo-chart-ele-"+(counter++);
      outer.appendChild(inner);
      pre.parentNode.insertBefore(outer,pre.nextSibling);
      pre.parentNode.removeChild(pre);
      /* One block's error leaves the others drawn. */
      try{row[1](inner.id,text);}catch(e){showError(inner.id,e);}
    }
  }
}
/* For pages whose content changes after load (the live preview). */
window.orvoChartDraw=function(root){
  drawAll(root);
  if(typeof mermaid!=="undefined"){
    try{mermaid.init(undefined,(root||document).querySelectorAll(".mermaid:not([data-processed])"));}catch(e){}
  }
};
document.addEventListener("DOMContentLoaded",function(){
  drawAll(document);
  if(typeof mermaid!=="undefined"){mermaid.initialize({startOnLoad:!0});}
});
}();
