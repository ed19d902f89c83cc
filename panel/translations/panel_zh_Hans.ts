<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_Hans" sourcelanguage="en">
<context>
    <name>JoinPage</name>
    <message>
        <source>Hidden network</source>
        <translation>隐藏网络</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>名称</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>密码</translation>
    </message>
    <message>
        <source>Hide</source>
        <translation>隐藏</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>显示</translation>
    </message>
    <message>
        <source>8 to 63 characters</source>
        <translation>8 到 63 个字符</translation>
    </message>
    <message>
        <source>8 to 63 characters, or none for an open network</source>
        <translation>8 到 63 个字符；开放网络请留空</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>连接</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Could not open Wi-Fi control socket: %1</source>
        <translation>无法打开 WLAN 控制套接字：%1</translation>
    </message>
    <message>
        <source>Could not bind temporary Wi-Fi control socket: %1</source>
        <translation>无法绑定临时 WLAN 控制套接字：%1</translation>
    </message>
    <message>
        <source>Could not protect temporary Wi-Fi control socket: %1</source>
        <translation>无法保护临时 WLAN 控制套接字：%1</translation>
    </message>
    <message>
        <source>Could not connect to wpa_supplicant: %1</source>
        <translation>无法连接到 wpa_supplicant：%1</translation>
    </message>
    <message>
        <source>Could not send Wi-Fi command: %1</source>
        <translation>无法发送 WLAN 命令：%1</translation>
    </message>
    <message>
        <source>Could not read Wi-Fi response: %1</source>
        <translation>无法读取 WLAN 响应：%1</translation>
    </message>
    <message>
        <source>Could not start Wi-Fi scan: %1</source>
        <translation>无法开始扫描 WLAN：%1</translation>
    </message>
    <message>
        <source>Could not select saved Wi-Fi network: %1</source>
        <translation>无法选择已保存的网络：%1</translation>
    </message>
    <message>
        <source>Could not set Wi-Fi network name: %1</source>
        <translation>无法设置网络名称：%1</translation>
    </message>
    <message>
        <source>Could not set open-network security: %1</source>
        <translation>无法设置为开放网络：%1</translation>
    </message>
    <message>
        <source>Could not set WPA security: %1</source>
        <translation>无法设置 WPA 安全性：%1</translation>
    </message>
    <message>
        <source>Could not set WPA password: %1</source>
        <translation>无法设置 WPA 密码：%1</translation>
    </message>
    <message>
        <source>Could not enable Wi-Fi network: %1</source>
        <translation>无法启用网络：%1</translation>
    </message>
    <message>
        <source>Could not select Wi-Fi network: %1</source>
        <translation>无法选择网络：%1</translation>
    </message>
    <message>
        <source>Could not save Wi-Fi network: %1</source>
        <translation>无法保存网络：%1</translation>
    </message>
    <message>
        <source>Could not disconnect Wi-Fi: %1</source>
        <translation>无法断开 WLAN 连接：%1</translation>
    </message>
    <message>
        <source>Could not remove Wi-Fi network: %1</source>
        <translation>无法删除网络：%1</translation>
    </message>
    <message>
        <source>Could not save removed Wi-Fi network: %1</source>
        <translation>无法保存网络的删除操作：%1</translation>
    </message>
    <message>
        <source>%1 is not a saved network.</source>
        <translation>%1 不是已保存的网络。</translation>
    </message>
    <message>
        <source>Wi-Fi control socket path is too long.</source>
        <translation>WLAN 控制套接字的路径过长。</translation>
    </message>
    <message>
        <source>Invalid wpa_supplicant control command.</source>
        <translation>无效的 wpa_supplicant 控制命令。</translation>
    </message>
    <message>
        <source>wpa_supplicant did not create a network profile.</source>
        <translation>wpa_supplicant 未创建网络配置。</translation>
    </message>
    <message>
        <source>You may not control Wi-Fi. Your user must be in the group netdev.</source>
        <translation>您无权控制 WLAN。您的用户必须属于 netdev 组。</translation>
    </message>
    <message>
        <source>The Wi-Fi service is not running.</source>
        <translation>WLAN 服务未运行。</translation>
    </message>
    <message>
        <source>The Wi-Fi service does not answer.</source>
        <translation>WLAN 服务没有响应。</translation>
    </message>
</context>
<context>
    <name>ListPage</name>
    <message>
        <source>%1 is out of range.</source>
        <translation>%1 不在信号范围内。</translation>
    </message>
    <message>
        <source>out of range</source>
        <translation>不在范围内</translation>
    </message>
    <message>
        <source>weak signal</source>
        <translation>信号弱</translation>
    </message>
    <message>
        <source>fair signal</source>
        <translation>信号一般</translation>
    </message>
    <message>
        <source>good signal</source>
        <translation>信号好</translation>
    </message>
    <message>
        <source>very good signal</source>
        <translation>信号很好</translation>
    </message>
    <message>
        <source>Wi-Fi</source>
        <translation>WLAN</translation>
    </message>
    <message>
        <source>Saved</source>
        <translation>已保存</translation>
    </message>
    <message>
        <source>In range</source>
        <translation>可用网络</translation>
    </message>
    <message>
        <source>saved</source>
        <translation>已保存</translation>
    </message>
    <message>
        <source>Details of %1</source>
        <translation>%1 的详细信息</translation>
    </message>
    <message>
        <source>Scan</source>
        <translation>扫描</translation>
    </message>
    <message>
        <source>Hidden network</source>
        <translation>隐藏网络</translation>
    </message>
</context>
<context>
    <name>Main</name>
    <message>
        <source>Wi-Fi</source>
        <translation>WLAN</translation>
    </message>
    <message>
        <source>New password</source>
        <translation>新密码</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>重试</translation>
    </message>
</context>
<context>
    <name>NetworkPage</name>
    <message>
        <source>Name</source>
        <translation>名称</translation>
    </message>
    <message>
        <source>Security</source>
        <translation>安全性</translation>
    </message>
    <message>
        <source>WPA, with a password</source>
        <translation>WPA，需要密码</translation>
    </message>
    <message>
        <source>Signal</source>
        <translation>信号</translation>
    </message>
    <message>
        <source>%1 dBm</source>
        <translation>%1 dBm</translation>
    </message>
    <message>
        <source>out of range</source>
        <translation>不在范围内</translation>
    </message>
    <message>
        <source>Channel</source>
        <translation>信道</translation>
    </message>
    <message>
        <source>%1 (%2 GHz)</source>
        <translation>%1 (%2 GHz)</translation>
    </message>
    <message>
        <source>Access point</source>
        <translation>接入点</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>IP 地址</translation>
    </message>
    <message>
        <source>This kind of network has to be set up in a file; see the set-up guide.</source>
        <translation>此类网络必须在文件中设置，请参阅设置指南。</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>断开连接</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>连接</translation>
    </message>
    <message>
        <source>Forget</source>
        <translation>忘记</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>返回</translation>
    </message>
    <message>
        <source>Forget %1? Its password is deleted.</source>
        <translation>忘记 %1？其密码将被删除。</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>保留</translation>
    </message>
    <message>
        <source>open</source>
        <translation>开放</translation>
    </message>
</context>
<context>
    <name>Networks</name>
    <message>
        <source>enterprise</source>
        <translation>企业</translation>
    </message>
    <message>
        <source>with password</source>
        <translation>需要密码</translation>
    </message>
    <message>
        <source>open</source>
        <translation>开放</translation>
    </message>
    <message>
        <source>other security</source>
        <translation>其他安全类型</translation>
    </message>
</context>
<context>
    <name>Wifi</name>
    <message>
        <source>Connected - %1</source>
        <translation>已连接 - %1</translation>
    </message>
    <message>
        <source>Connected, but no address. Is a DHCP client running?</source>
        <translation>已连接，但没有地址。DHCP 客户端在运行吗？</translation>
    </message>
    <message>
        <source>Connected, waiting for an address</source>
        <translation>已连接，正在获取地址</translation>
    </message>
    <message>
        <source>Wi-Fi is switched off.</source>
        <translation>WLAN 已关闭。</translation>
    </message>
    <message>
        <source>Connecting to %1</source>
        <translation>正在连接 %1</translation>
    </message>
    <message>
        <source>Not connected</source>
        <translation>未连接</translation>
    </message>
    <message>
        <source>Looking for networks</source>
        <translation>正在搜索网络</translation>
    </message>
    <message>
        <source>Could not connect to %1.</source>
        <translation>无法连接到 %1。</translation>
    </message>
    <message>
        <source>Could not connect. Check the password.</source>
        <translation>无法连接。请检查密码。</translation>
    </message>
    <message>
        <source>Could not connect. Check the name and the password.</source>
        <translation>无法连接。请检查名称和密码。</translation>
    </message>
    <message>
        <source>Could not connect to %1. It may be out of range, or its password has changed.</source>
        <translation>无法连接到 %1。它可能不在信号范围内，或者密码已更改。</translation>
    </message>
    <message>
        <source>Forgetting %1</source>
        <translation>正在忘记 %1</translation>
    </message>
    <message>
        <source>Disconnecting</source>
        <translation>正在断开连接</translation>
    </message>
</context>
</TS>
