<?xml version="1.0" encoding="utf-8"?>
<plist version="1.0">
<dict>
  <key>PainterInfo</key>
  <dict>
    <key>GeneralInfo</key>
    <dict>
      <!-- Captions show whatever clip is on, with a shadow of half strength -->
      <key>SaveMovieMode</key><true/>
      <!-- From 22 to 26 s the movie runs at half speed -->
      <key>SlowInfoData</key><string>1,0.5,22.0,26.0,22.0,22.0|</string>
      <key>VideoHeight</key><integer>720</integer>
      <key>VideoWidth</key><integer>1280</integer>
    </dict>
    <key>CaptionInfo</key>
    <dict>
      <key>Valid</key><true/>
      <key>CaptionString</key><string><![CDATA[<Caption><Text>Top left</Text><FontName>DejaVu Sans</FontName><FontSize>72</FontSize><LayoutType>1</LayoutType><FontColor>16777215</FontColor><LeftPos>0</LeftPos><RightPos>800</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>Top centre</Text><FontName>DejaVu Sans</FontName><FontSize>72</FontSize><LayoutType>2</LayoutType><FontColor>6349055</FontColor><LeftPos>1000</LeftPos><RightPos>1800</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>Top right</Text><FontName>DejaVu Sans</FontName><FontSize>72</FontSize><LayoutType>3</LayoutType><FontColor>16777215</FontColor><LeftPos>2000</LeftPos><RightPos>2800</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>Middle left</Text><FontName>DejaVu Sans</FontName><FontSize>72</FontSize><LayoutType>4</LayoutType><FontColor>6349055</FontColor><LeftPos>3000</LeftPos><RightPos>3800</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>In the middle</Text><FontName>DejaVu Sans</FontName><FontSize>72</FontSize><LayoutType>5</LayoutType><FontColor>16777215</FontColor><LeftPos>4000</LeftPos><RightPos>4800</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>Middle right</Text><FontName>DejaVu Sans</FontName><FontSize>72</FontSize><LayoutType>6</LayoutType><FontColor>6349055</FontColor><LeftPos>5000</LeftPos><RightPos>5800</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>Bottom left</Text><FontName>DejaVu Sans</FontName><FontSize>72</FontSize><LayoutType>7</LayoutType><FontColor>16777215</FontColor><LeftPos>6000</LeftPos><RightPos>6800</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>Bottom centre</Text><FontName>DejaVu Sans</FontName><FontSize>72</FontSize><LayoutType>8</LayoutType><FontColor>6349055</FontColor><LeftPos>7000</LeftPos><RightPos>7800</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>Bottom right</Text><FontName>DejaVu Sans</FontName><FontSize>72</FontSize><LayoutType>9</LayoutType><FontColor>16777215</FontColor><LeftPos>8000</LeftPos><RightPos>8800</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>Three lines
of one caption,
each in its own</Text><FontName>DejaVu Sans</FontName><FontSize>64</FontSize><LayoutType>5</LayoutType><FontColor>16777215</FontColor><LeftPos>9200</LeftPos><RightPos>10000</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>In a box with a margin, its lines of about the same length, which is easier to read</Text><LayoutType>8</LayoutType><LeftPos>10100</LeftPos><RightPos>11100</RightPos><Box>60</Box><Balance>1</Balance><Margin>40</Margin></Caption>
<Caption><Text>A caption that is too long for the width of the picture wraps at its words and goes on in the next line, as far as it needs to</Text><FontName>DejaVu Sans</FontName><FontSize>64</FontSize><LayoutType>8</LayoutType><FontColor>16777215</FontColor><LeftPos>11200</LeftPos><RightPos>12700</RightPos><VideoID>1</VideoID><Box>0</Box><Balance>0</Balance><Margin>0</Margin></Caption>
<Caption><Text>Bold italic letters in an outline</Text><FontSize>80</FontSize><FontColor>6349055</FontColor><LeftPos>12800</LeftPos><RightPos>13800</RightPos><Outline>5</Outline><OutlineColor>0</OutlineColor><Bold>1</Bold><Italic>1</Italic></Caption>
<Caption><Text>朝の光の中を走る</Text><FontName>Noto Sans CJK JP</FontName><FontSize>80</FontSize><LayoutType>8</LayoutType><FontColor>16777215</FontColor><LeftPos>14000</LeftPos><RightPos>15800</RightPos><VideoID>1</VideoID><Outline>0</Outline><Bold>0</Bold><Italic>0</Italic></Caption>
<Caption><Text>الطريق إلى البحيرة</Text><FontName>Noto Sans Arabic</FontName><FontSize>80</FontSize><LayoutType>8</LayoutType><FontColor>16777215</FontColor><LeftPos>16000</LeftPos><RightPos>17800</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>Almost there 🚗💨 🎉</Text><FontName>DejaVu Sans</FontName><FontSize>80</FontSize><LayoutType>8</LayoutType><FontColor>6349055</FontColor><LeftPos>18000</LeftPos><RightPos>19800</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>One caption ends</Text><FontName>DejaVu Sans</FontName><FontSize>64</FontSize><LayoutType>2</LayoutType><FontColor>16777215</FontColor><LeftPos>20000</LeftPos><RightPos>21000</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>and the next one begins</Text><FontName>DejaVu Sans</FontName><FontSize>64</FontSize><LayoutType>2</LayoutType><FontColor>6349055</FontColor><LeftPos>21100</LeftPos><RightPos>22000</RightPos><VideoID>1</VideoID></Caption>
<Caption><Text>Slow motion: this stays twice as long</Text><FontName>DejaVu Sans</FontName><FontSize>64</FontSize><LayoutType>8</LayoutType><FontColor>16769184</FontColor><LeftPos>23000</LeftPos><RightPos>24000</RightPos><VideoID>1</VideoID></Caption>]]></string>
    </dict>
  </dict>
</dict>
</plist>
