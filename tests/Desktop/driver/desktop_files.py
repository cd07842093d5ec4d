# SPDX-License-Identifier: GPL-3.0-or-later
"""Configuration files with which window managers and panels start without asking questions."""

SESSION_BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <servicedir>{services}</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
    <allow user="*"/>
  </policy>
</busconfig>
"""

OPENBOX = """<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew><followMouse>no</followMouse></focus>
  <placement><policy>Smart</policy><monitor>Primary</monitor></placement>
  <theme>
    <name>{theme}</name><titleLayout>NLIMC</titleLayout>
    <font place="ActiveWindow"><name>sans</name><size>10</size><weight>bold</weight></font>
    <font place="InactiveWindow"><name>sans</name><size>10</size></font>
  </theme>
  <desktops><number>2</number><popupTime>0</popupTime></desktops>
  <mouse>
    <context name="Titlebar"><mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/>
    </mousebind></context>
    <context name="Client"><mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/>
    </mousebind></context>
  </mouse>
</openbox_config>
"""

PICOM = """shadow = true;
wintypes: { dock = { shadow = false; }; };
"""

I3 = """font pango:DejaVu Sans 10
workspace_layout default
focus_follows_mouse no
for_window [class="test-window"] floating enable
workspace 1 output {first}
workspace 3 output {second}
"""

SWAY = """xwayland disable
focus_follows_mouse no
default_border none
default_floating_border none
for_window [title="Other"] floating enable, move absolute position 30 60, focus
for_window [title="Full"] focus
"""

#: For a compositor that only shows another one.
HOST = """xwayland disable
{windows}"""
HOST_WINDOW = """output {outer} resolution {width}x{height} position {x} 0
for_window [title="{inner}"] move container to output {outer}, fullscreen enable
"""

LABWC = """<?xml version="1.0"?>
<labwc_config>
  <mouse><context name="Client"><mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
  </context></mouse>
  <windowRules><windowRule title="Other" serverDecoration="no"><action name="MoveTo" x="30" y="60"/></windowRule></windowRules>
</labwc_config>
"""

WAYFIRE = """[core]
plugins = place window-rules
xwayland = false
[window-rules]
other = on created if title is "Other" then move 30 60
"""

KDE_GLOBALS = """[KDE]
AnimationDurationFactor=0
"""

#: Without the resistance of a monitor's edge to the pointer.
KWIN = """[Windows]
Placement=ZeroCornered
[EdgeBarrier]
EdgeBarrier=0
CornerBarrier=false
"""

GNOME_SETTINGS = """[org/gnome/desktop/interface]
enable-hot-corners=false
enable-animations=false
[org/gnome/desktop/background]
picture-options='none'
color-shading-type='solid'
primary-color='{colour}'
[org/gnome/mutter]
center-new-windows=false
[org/gnome/desktop/notifications]
show-banners=false
[org/gnome/shell]
welcome-dialog-last-shown-version='99'
[org/gnome/desktop/session]
idle-delay=uint32 0
[org/gnome/desktop/screensaver]
lock-enabled=false
"""

WAYBAR = {"layer": "top", "position": "bottom", "height": 30, "modules-right": ["custom/day"],
          "custom/day": {"exec": "echo working day", "interval": 3600}}
WAYBAR_STYLE = """* { font: 13px sans-serif; border: none; }
window#waybar { background: #e6e6eb; color: #202020; }
"""

_PANEL = """<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="{dark}"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="{position}"/>
      <property name="output-name" type="string" value="{output}"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="{size}"/>
      <property name="icon-size" type="uint" value="{icon_size}"/>
      <property name="background-style" type="uint" value="1"/>
      <property name="background-rgba" type="array">
        {background}
      </property>
      <property name="plugin-ids" type="array">
        {identifiers}
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    {plugins}
  </property>
</channel>
"""

_SEPARATOR = ('<property name="plugin-{id}" type="string" value="separator"><property name="expand" type="bool" '
              'value="{expand}"/><property name="style" type="uint" value="0"/></property>')
_TASK_LIST = ('<property name="plugin-{id}" type="string" value="tasklist"><property name="grouping" type="uint" '
              'value="0"/><property name="show-handle" type="bool" value="false"/></property>')
_TRAY = ('<property name="plugin-{id}" type="string" value="systray"><property name="square-icons" type="bool" '
         'value="true"/><property name="icon-size" type="int" value="{icon_size}"/></property>')
_CLOCK = ('<property name="plugin-{id}" type="string" value="clock"><property name="digital-layout" type="uint" '
          'value="3"/><property name="digital-time-font" type="string" value="DejaVu Sans 11"/>'
          '<property name="digital-time-format" type="string" value="{clock_format}"/></property>')


def panel_file(output, bottom=True, size=30, icon_size=18, background=(0.9, 0.9, 0.92, 1.0), dark=False, tray=False,
               clock_format="%A"):
    """A task bar along one edge of one monitor: open windows, optionally a tray, and a clock that shows only the day, so that
    pictures of the panel are comparable."""
    plugins = [_TASK_LIST, _SEPARATOR, _TRAY, _SEPARATOR, _CLOCK] if tray else [_TASK_LIST, _SEPARATOR, _CLOCK]
    expand = iter(["true", "false"])
    lines = [plugin.format(id=index, icon_size=icon_size, clock_format=clock_format,
                           expand=next(expand) if plugin is _SEPARATOR else "")
             for index, plugin in enumerate(plugins, 1)]
    return _PANEL.format(
        position="p=8;x=0;y=0" if bottom else "p=6;x=0;y=0", output=output, size=size, icon_size=icon_size,
        dark=str(dark).lower(), plugins="\n    ".join(lines),
        background="\n        ".join(f'<value type="double" value="{part}"/>' for part in background),
        identifiers="\n        ".join(f'<value type="int" value="{index}"/>' for index in range(1, len(plugins) + 1)))
