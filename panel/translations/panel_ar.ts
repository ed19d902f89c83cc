<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ar" sourcelanguage="en">
<context>
    <name>JoinPage</name>
    <message>
        <source>Hidden network</source>
        <translation>شبكة مخفية</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>الاسم</translation>
    </message>
    <message>
        <source>Password</source>
        <translation>كلمة المرور</translation>
    </message>
    <message>
        <source>Hide</source>
        <translation>إخفاء</translation>
    </message>
    <message>
        <source>Show</source>
        <translation>إظهار</translation>
    </message>
    <message>
        <source>8 to 63 characters</source>
        <translation>من 8 إلى 63 حرفًا</translation>
    </message>
    <message>
        <source>8 to 63 characters, or none for an open network</source>
        <translation>من 8 إلى 63 حرفًا، أو تُترك فارغة لشبكة مفتوحة</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>إلغاء</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>اتصال</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Could not open Wi-Fi control socket: %1</source>
        <translation>تعذّر فتح مقبس التحكم في Wi-Fi: %1</translation>
    </message>
    <message>
        <source>Could not bind temporary Wi-Fi control socket: %1</source>
        <translation>تعذّر ربط مقبس التحكم المؤقت في Wi-Fi: %1</translation>
    </message>
    <message>
        <source>Could not protect temporary Wi-Fi control socket: %1</source>
        <translation>تعذّرت حماية مقبس التحكم المؤقت في Wi-Fi: %1</translation>
    </message>
    <message>
        <source>Could not connect to wpa_supplicant: %1</source>
        <translation>تعذّر الاتصال بـ wpa_supplicant: %1</translation>
    </message>
    <message>
        <source>Could not send Wi-Fi command: %1</source>
        <translation>تعذّر إرسال أمر Wi-Fi: %1</translation>
    </message>
    <message>
        <source>Could not read Wi-Fi response: %1</source>
        <translation>تعذّرت قراءة استجابة Wi-Fi: %1</translation>
    </message>
    <message>
        <source>Could not start Wi-Fi scan: %1</source>
        <translation>تعذّر بدء البحث عن الشبكات: %1</translation>
    </message>
    <message>
        <source>Could not select saved Wi-Fi network: %1</source>
        <translation>تعذّر اختيار الشبكة المحفوظة: %1</translation>
    </message>
    <message>
        <source>Could not set Wi-Fi network name: %1</source>
        <translation>تعذّر تعيين اسم الشبكة: %1</translation>
    </message>
    <message>
        <source>Could not set open-network security: %1</source>
        <translation>تعذّر إعداد الشبكة كشبكة مفتوحة: %1</translation>
    </message>
    <message>
        <source>Could not set WPA security: %1</source>
        <translation>تعذّر إعداد أمان WPA: %1</translation>
    </message>
    <message>
        <source>Could not set WPA password: %1</source>
        <translation>تعذّر تعيين كلمة مرور WPA: %1</translation>
    </message>
    <message>
        <source>Could not enable Wi-Fi network: %1</source>
        <translation>تعذّر تفعيل الشبكة: %1</translation>
    </message>
    <message>
        <source>Could not select Wi-Fi network: %1</source>
        <translation>تعذّر اختيار الشبكة: %1</translation>
    </message>
    <message>
        <source>Could not save Wi-Fi network: %1</source>
        <translation>تعذّر حفظ الشبكة: %1</translation>
    </message>
    <message>
        <source>Could not disconnect Wi-Fi: %1</source>
        <translation>تعذّر قطع اتصال Wi-Fi: %1</translation>
    </message>
    <message>
        <source>Could not remove Wi-Fi network: %1</source>
        <translation>تعذّرت إزالة الشبكة: %1</translation>
    </message>
    <message>
        <source>Could not save removed Wi-Fi network: %1</source>
        <translation>تعذّر حفظ إزالة الشبكة: %1</translation>
    </message>
    <message>
        <source>%1 is not a saved network.</source>
        <translation>الشبكة ⁨%1⁩ ليست محفوظة.</translation>
    </message>
    <message>
        <source>Wi-Fi control socket path is too long.</source>
        <translation>مسار مقبس التحكم في Wi-Fi طويل جدًا.</translation>
    </message>
    <message>
        <source>Invalid wpa_supplicant control command.</source>
        <translation>أمر تحكم غير صالح في wpa_supplicant.</translation>
    </message>
    <message>
        <source>wpa_supplicant did not create a network profile.</source>
        <translation>لم ينشئ wpa_supplicant ملف تعريف للشبكة.</translation>
    </message>
    <message>
        <source>You may not control Wi-Fi. Your user must be in the group netdev.</source>
        <translation>لا يُسمح لك بالتحكم في Wi-Fi. يجب أن يكون المستخدم في المجموعة netdev.</translation>
    </message>
    <message>
        <source>The Wi-Fi service is not running.</source>
        <translation>خدمة Wi-Fi لا تعمل.</translation>
    </message>
    <message>
        <source>The Wi-Fi service does not answer.</source>
        <translation>خدمة Wi-Fi لا تستجيب.</translation>
    </message>
</context>
<context>
    <name>ListPage</name>
    <message>
        <source>%1 is out of range.</source>
        <translation>الشبكة %1 خارج النطاق.</translation>
    </message>
    <message>
        <source>out of range</source>
        <translation>خارج النطاق</translation>
    </message>
    <message>
        <source>weak signal</source>
        <translation>إشارة ضعيفة</translation>
    </message>
    <message>
        <source>fair signal</source>
        <translation>إشارة متوسطة</translation>
    </message>
    <message>
        <source>good signal</source>
        <translation>إشارة جيدة</translation>
    </message>
    <message>
        <source>very good signal</source>
        <translation>إشارة جيدة جدًا</translation>
    </message>
    <message>
        <source>Wi-Fi</source>
        <translation>Wi-Fi</translation>
    </message>
    <message>
        <source>Saved</source>
        <translation>المحفوظة</translation>
    </message>
    <message>
        <source>In range</source>
        <translation>المتاحة</translation>
    </message>
    <message>
        <source>saved</source>
        <translation>محفوظة</translation>
    </message>
    <message>
        <source>Details of %1</source>
        <translation>تفاصيل %1</translation>
    </message>
    <message>
        <source>Scan</source>
        <translation>بحث</translation>
    </message>
    <message>
        <source>Hidden network</source>
        <translation>شبكة مخفية</translation>
    </message>
</context>
<context>
    <name>Main</name>
    <message>
        <source>Wi-Fi</source>
        <translation>Wi-Fi</translation>
    </message>
    <message>
        <source>New password</source>
        <translation>كلمة مرور جديدة</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>إعادة المحاولة</translation>
    </message>
</context>
<context>
    <name>NetworkPage</name>
    <message>
        <source>Name</source>
        <translation>الاسم</translation>
    </message>
    <message>
        <source>Security</source>
        <translation>الأمان</translation>
    </message>
    <message>
        <source>WPA, with a password</source>
        <translation>بكلمة مرور (WPA)</translation>
    </message>
    <message>
        <source>Signal</source>
        <translation>الإشارة</translation>
    </message>
    <message>
        <source>%1 dBm</source>
        <translation>⁦%1 dBm⁩</translation>
    </message>
    <message>
        <source>out of range</source>
        <translation>خارج النطاق</translation>
    </message>
    <message>
        <source>Channel</source>
        <translation>القناة</translation>
    </message>
    <message>
        <source>%1 (%2 GHz)</source>
        <translation>⁦%1 (%2 GHz)⁩</translation>
    </message>
    <message>
        <source>Access point</source>
        <translation>نقطة الوصول</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>عنوان IP</translation>
    </message>
    <message>
        <source>This kind of network has to be set up in a file; see the set-up guide.</source>
        <translation>يجب إعداد هذا النوع من الشبكات في ملف؛ راجع دليل الإعداد.</translation>
    </message>
    <message>
        <source>Disconnect</source>
        <translation>قطع الاتصال</translation>
    </message>
    <message>
        <source>Connect</source>
        <translation>اتصال</translation>
    </message>
    <message>
        <source>Forget</source>
        <translation>نسيان</translation>
    </message>
    <message>
        <source>Back</source>
        <translation>رجوع</translation>
    </message>
    <message>
        <source>Forget %1? Its password is deleted.</source>
        <translation>هل تريد نسيان الشبكة %1؟ ستُحذف كلمة مرورها.</translation>
    </message>
    <message>
        <source>Keep</source>
        <translation>الاحتفاظ بها</translation>
    </message>
    <message>
        <source>open</source>
        <translation>شبكة مفتوحة</translation>
    </message>
</context>
<context>
    <name>Networks</name>
    <message>
        <source>enterprise</source>
        <translation>للمؤسسات</translation>
    </message>
    <message>
        <source>with password</source>
        <translation>بكلمة مرور</translation>
    </message>
    <message>
        <source>open</source>
        <translation>مفتوحة</translation>
    </message>
    <message>
        <source>other security</source>
        <translation>أمان آخر</translation>
    </message>
</context>
<context>
    <name>Wifi</name>
    <message>
        <source>Connected - %1</source>
        <translation>متصل - ⁦%1⁩</translation>
    </message>
    <message>
        <source>Connected, but no address. Is a DHCP client running?</source>
        <translation>متصل، لكن بلا عنوان. هل يعمل عميل DHCP؟</translation>
    </message>
    <message>
        <source>Connected, waiting for an address</source>
        <translation>متصل، في انتظار عنوان</translation>
    </message>
    <message>
        <source>Wi-Fi is switched off.</source>
        <translation>تم إيقاف Wi-Fi.</translation>
    </message>
    <message>
        <source>Connecting to %1</source>
        <translation>جارٍ الاتصال بالشبكة %1</translation>
    </message>
    <message>
        <source>Not connected</source>
        <translation>غير متصل</translation>
    </message>
    <message>
        <source>Looking for networks</source>
        <translation>جارٍ البحث عن شبكات</translation>
    </message>
    <message>
        <source>Could not connect to %1.</source>
        <translation>تعذّر الاتصال بالشبكة %1.</translation>
    </message>
    <message>
        <source>Could not connect. Check the password.</source>
        <translation>تعذّر الاتصال. تحقّق من كلمة المرور.</translation>
    </message>
    <message>
        <source>Could not connect. Check the name and the password.</source>
        <translation>تعذّر الاتصال. تحقّق من الاسم وكلمة المرور.</translation>
    </message>
    <message>
        <source>Could not connect to %1. It may be out of range, or its password has changed.</source>
        <translation>تعذّر الاتصال بالشبكة %1. قد تكون خارج النطاق، أو تغيّرت كلمة مرورها.</translation>
    </message>
    <message>
        <source>Forgetting %1</source>
        <translation>جارٍ نسيان الشبكة %1</translation>
    </message>
    <message>
        <source>Disconnecting</source>
        <translation>جارٍ قطع الاتصال</translation>
    </message>
</context>
</TS>
