<?xml version="1.0" encoding="utf-8"?>
<plist version="1.0">
<dict>
  <key>VRXWrapper</key>
  <dict>
    <key>VideoTrack</key>
    <array>
      <!-- The middle of a clip of the movie's own size and rate -->
      <dict>
        <key>SourceFile</key><string>clips/morning.mp4</string>
        <key>SourceType</key><integer>2</integer>
        <key>StartTime</key><real>1001.0</real>
        <key>EndTime</key><real>5005.0</real>
      </dict>
      <!-- A smaller one with 25 frames a second -->
      <dict>
        <key>SourceFile</key><string>clips/noon.mkv</string>
        <key>SourceType</key><integer>2</integer>
        <key>StartTime</key><real>0.0</real>
        <key>EndTime</key><real>3003.0</real>
      </dict>
      <!-- One from a telephone that was held upright -->
      <dict>
        <key>SourceFile</key><string>clips/upright.mp4</string>
        <key>SourceType</key><integer>2</integer>
        <key>StartTime</key><real>500.5</real>
        <key>EndTime</key><real>2502.5</real>
      </dict>
      <!-- A whole clip: no times -->
      <dict>
        <key>SourceFile</key><string>clips/evening.mov</string>
        <key>SourceType</key><integer>2</integer>
      </dict>
    </array>
    <key>AudioTrack</key>
    <array>
      <dict>
        <key>SourceFile</key><string>clips/music.mp4</string>
        <key>SourceType</key><integer>2</integer>
        <key>StartTime</key><real>0.0</real>
        <key>EndTime</key><real>12012.0</real>
      </dict>
    </array>
    <key>OutputSettings</key>
    <dict>
      <key>OutputFilePath</key><string>first-movie.mp4</string>
      <key>VideoOutputSettings</key>
      <dict>
        <key>VideoCodecType</key><integer>0</integer>
        <key>VideoSpecificationType</key><integer>1</integer>
        <key>Width</key><integer>1280</integer>
        <key>Height</key><integer>720</integer>
        <key>TimeValue</key><integer>1001</integer>
        <key>TimeScale</key><integer>30000</integer>
        <key>AverageBitrate</key><integer>4000000</integer>
      </dict>
      <key>AudioOutputSettings</key>
      <dict>
        <key>AudioCodecType</key><integer>1</integer>
        <key>Channel</key><integer>2</integer>
        <key>BitPerSample</key><integer>16</integer>
        <key>SamplingRate</key><integer>48000</integer>
      </dict>
    </dict>
  </dict>
</dict>
</plist>
