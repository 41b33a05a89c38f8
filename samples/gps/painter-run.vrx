<?xml version="1.0" encoding="utf-8"?>
<plist version="1.0">
<dict>
  <key>PainterInfo</key>
  <dict>
    <key>GeneralInfo</key>
    <dict>
      <key>SaveMovieMode</key><true/>
      <key>VideoWidth</key><integer>1280</integer>
      <key>VideoHeight</key><integer>720</integer>
      <!-- Instruments along the lower edge -->
      <key>VideoLayoutType</key><integer>1</integer>
      <!-- mph -->
      <key>GpsUnitFromUser</key><integer>1</integer>
      <!-- Which clip shows when: a record each, at normal speed -->
      <key>SlowInfoData</key><string>1,1.0,0.0,75.0,0.0,0.0|</string>
      <key>StringManager</key>
      <array>
        <string>mph</string>
        <string>mi</string>
        <string>km/h</string>
        <string>km</string>
        <string>kn</string>
        <string>NM</string>
        <string>Speed</string>
        <string>Date</string>
        <string>Elapsed</string>
        <string>Total</string>
        <string>Time</string>
        <string>Average</string>
        <string>Distance</string>
        <string>Track</string>
      </array>
    </dict>
    <key>TemplateInfo</key>
    <dict>
      <key>Valid</key><true/>
      <!-- Sports -->
      <key>ScenarioType</key><integer>2</integer>
      <key>Width</key><integer>1280</integer>
      <key>Height</key><integer>720</integer>
      <key>LinkGPSLog</key><true/>
      <key>DrawTrimmedOutArea</key><true/>
      <key>DrawStartTime</key><real>0.0</real>
      <key>DrawEndTime</key><real>75.0</real>
      <key>LogDataArray</key>
      <array>
        <dict>
          <key>VideoID</key><integer>1</integer>
          <key>StartTime</key><real>0.0</real>
          <key>EndTime</key><real>75.0</real>
          <key>GPSLogFilePath</key><string>clips/run.mp4</string>
          <key>OriginalDateTime</key><date>2024:05:01T14:00:00Z</date>
          <key>Duration</key><real>75.0</real>
        </dict>
      </array>
    </dict>
  </dict>
</dict>
</plist>
